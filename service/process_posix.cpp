#include <signal.h>
#include <unistd.h>

#include <csignal>

#include "service/process.h"

namespace Orvel::Service {

bool runsAsRoot() { return ::geteuid() == 0; }

void surviveFailingWrites() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void ignoreFurtherSignals() {
    // Blocked and not ignored: whoever handles them still gives them back their default action.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void writeToStandardError(std::string_view text) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace Orvel::Service
