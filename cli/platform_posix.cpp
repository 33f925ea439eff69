#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

#include "cli/platform.h"

namespace Orvel::Tool {

namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
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

std::vector<std::string> commandLine(int argc, char** argv) { return {argv, argv + argc}; }

std::filesystem::path toPath(const std::string& argument) { return argument; }

int openForReading(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        fail("open");
    }
    // A folder can be opened, but not be read.
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        ::close(descriptor);
        errno = EISDIR;
        fail("open");
    }
    return descriptor;
}

int standardInput() { return STDIN_FILENO; }

std::size_t readSome(int descriptor, char* bytes, std::size_t size) {
    for (;;) {
        const auto count = ::read(descriptor, bytes, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            fail("read");
        }
    }
}

void closeFile(int descriptor) { ::close(descriptor); }

int lastReportableYear() { return 9999; }

std::string_view absentServiceHint() {
    return "is orvel-analyticsd running, and with the same ORVEL_RPC_DIRECTORY, if that is set?";
}

}  // namespace Orvel::Tool
