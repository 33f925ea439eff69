#include "library/host_state.h"

#include <fcntl.h>
#include <locale.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

namespace Orvel::HostTests {
namespace {

namespace fs = std::filesystem;

std::string textOf(const sigset_t& set) {
    std::string text;
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        text += sigismember(&set, signal) == 1 ? '1' : '0';
    }
    return text;
}

void addSignals(HostState& state) {
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) != 0) {
            continue;  // The C library keeps it for itself.
        }
        std::ostringstream text;
        text << reinterpret_cast<const void*>(action.sa_handler) << ", flags " << action.sa_flags
             << ", mask " << textOf(action.sa_mask);
        state["signal " + std::to_string(signal)] = text.str();
    }
    sigset_t set{};
    ::pthread_sigmask(SIG_BLOCK, nullptr, &set);
    state["blocked signals"] = textOf(set);
    ::sigpending(&set);
    state["pending signals"] = textOf(set);
    stack_t stack{};
    ::sigaltstack(nullptr, &stack);
    std::ostringstream text;
    text << stack.ss_sp << ", " << stack.ss_size << " bytes, flags " << stack.ss_flags;
    state["stack of signals"] = text.str();
}

void addLocales(HostState& state) {
    state["locale of C"] = std::setlocale(LC_ALL, nullptr);
    state["locale of C++"] = std::locale().name();
    std::ostringstream text;
    text << ::uselocale(nullptr);
    state["locale of the thread"] = text.str();
}

void addDescriptors(HostState& state) {
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        const std::string name = entry.path().filename();
        std::error_code gone;
        const std::string target = fs::read_symlink(entry.path(), gone);
        if (!gone && !target.starts_with("/proc/")) {
            const int descriptor = std::stoi(name);
            state["descriptor " + name] = target + ", flags " +
                                          std::to_string(::fcntl(descriptor, F_GETFD)) + ", " +
                                          std::to_string(::fcntl(descriptor, F_GETFL));
        }
    }
}

void addProcess(HostState& state) {
    int number = 0;
    for (char** line = environ; *line != nullptr; ++line) {
        state["variable " + std::to_string(number++)] = *line;
    }
    for (const auto& entry : fs::directory_iterator("/proc/self/task")) {
        state["thread " + entry.path().filename().string()] = "there";
    }
    state["working folder"] = fs::current_path();
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("Umask:")) {
            state["mask of new files"] = line;
        }
    }
}

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text += part;
    }
    return text;
}

}  // namespace

HostState hostState() {
    HostState state;
    addSignals(state);
    addLocales(state);
    addDescriptors(state);
    addProcess(state);
    return state;
}

std::vector<std::string> differences(const HostState& before, const HostState& after) {
    std::vector<std::string> found;
    for (const auto& [name, value] : before) {
        const auto now = after.find(name);
        if (now == after.end()) {
            found.push_back(joined({name, " is gone: ", value}));
        } else if (now->second != value) {
            found.push_back(joined({name, " was ", value, " and is ", now->second}));
        }
    }
    for (const auto& [name, value] : after) {
        if (!before.contains(name)) {
            found.push_back(joined({name, " is new: ", value}));
        }
    }
    return found;
}

CapturedOutput::CapturedOutput()
    : file_(::memfd_create("output", MFD_CLOEXEC)),
      output_(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)),
      error_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)) {
    std::fflush(nullptr);
    ::dup2(file_, STDOUT_FILENO);
    ::dup2(file_, STDERR_FILENO);
}

CapturedOutput::~CapturedOutput() { finish(); }

std::string CapturedOutput::finish() {
    if (file_ < 0) {
        return {};
    }
    std::fflush(nullptr);
    ::dup2(output_, STDOUT_FILENO);
    ::dup2(error_, STDERR_FILENO);
    ::close(output_);
    ::close(error_);
    std::string text(static_cast<std::size_t>(::lseek(file_, 0, SEEK_END)), '\0');
    const ssize_t count = ::pread(file_, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    ::close(std::exchange(file_, -1));
    return text;
}

}  // namespace Orvel::HostTests
