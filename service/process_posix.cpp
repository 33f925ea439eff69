#include <grp.h>
#include <pwd.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "service/process.h"

namespace Orvel::Service {

bool runsAsRoot() { return ::geteuid() == 0; }

std::optional<std::uint32_t> userNumber(const std::string& name) {
    // A name would end at its first U+0000.
    if (name.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    std::vector<char> texts(1024);
    for (;;) {
        passwd entry{};
        passwd* found = nullptr;
        const int error = ::getpwnam_r(name.c_str(), &entry, texts.data(), texts.size(), &found);
        if (found != nullptr) {
            return found->pw_uid;
        }
        if (error == ERANGE) {
            texts.resize(texts.size() * 2);
        } else if (error == 0 || error == ENOENT || error == ESRCH) {
            return std::nullopt;
        } else if (error != EINTR) {
            throw std::system_error(error, std::generic_category(), "cannot look up a user");
        }
    }
}

void surviveFailingWrites() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void allowManyDescriptors() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        // Where this is forbidden, those that there are must do.
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

std::uint32_t groupNamed(const std::string& name) {
    // Far more than the names of a large group's members take.
    std::vector<char> buffer(std::size_t{1} << 20U);
    group entry{};
    group* found = nullptr;
    ::getgrnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
    if (found == nullptr) {
        throw std::runtime_error("there is no group " + name + " (socket_group)");
    }
    return found->gr_gid;
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
