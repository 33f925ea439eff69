#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>

#include "cli/platform.h"

namespace Orvel::Tool {

namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

void prepareStandardStreams() {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    // open gives the lowest free number, so this fills the gaps from below. Read-only: what is
    // written to a stream that the caller closed fails instead of vanishing.
    int descriptor = 0;
    do {
        descriptor = ::open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO) {
        ::close(descriptor);
    }
}

bool standardErrorIsTerminal() {
    return ::isatty(STDERR_FILENO) == 1 && environment("TERM") != "dumb";
}

bool colourIsWelcome() { return environment("NO_COLOR").empty(); }

}  // namespace Orvel::Tool
