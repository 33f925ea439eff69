#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <vector>

#include "service/process.h"

namespace Orvel::Service {

bool runsAsRoot() { return ::geteuid() == 0; }

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
