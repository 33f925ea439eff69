#include <unistd.h>

#include <csignal>

#include "service/process.h"

namespace Orvel::Service {

bool runsAsRoot() { return ::geteuid() == 0; }

void surviveFailingWrites() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void writeToStandardError(std::string_view text) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace Orvel::Service
