#include "library/watched_calls.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>

namespace Orvel::HostTests {
namespace {

/// A call to which there is an objection: always, unless one of its arguments has a flag, or unless
/// one of them is null, with which the call only looks.
struct Rule {
    std::int64_t call;
    const char* objection;
    enum class Unless { kNever, kHasFlag, kIsNull } unless = Unless::kNever;
    int argument = 0;
    std::uint64_t flag = 0;
};

constexpr Rule unlessFlag(std::int64_t call, const char* objection, int argument,
                          std::uint64_t flag) {
    return {call, objection, Rule::Unless::kHasFlag, argument, flag};
}

constexpr Rule unlessNull(std::int64_t call, const char* objection, int argument) {
    return {call, objection, Rule::Unless::kIsNull, argument};
}

bool isExcused(const Rule& rule, std::uint64_t argument) {
    switch (rule.unless) {
        case Rule::Unless::kHasFlag:
            return (argument & rule.flag) != 0;
        case Rule::Unless::kIsNull:
            return argument == 0;
        default:
            return false;
    }
}

constexpr const char* kInherited = "makes a descriptor that other programs inherit";
constexpr const char* kWrites = "writes";
constexpr const char* kSignal = "may raise SIGPIPE";
constexpr const char* kStarts = "starts a thread or a process";
constexpr const char* kChanges = "changes signals, timers or the process";

constexpr Rule kRules[] = {
    unlessFlag(SYS_openat, kInherited, 2, O_CLOEXEC),
    {SYS_openat2, kInherited},
    unlessFlag(SYS_socket, kInherited, 1, SOCK_CLOEXEC),
    unlessFlag(SYS_socketpair, kInherited, 1, SOCK_CLOEXEC),
    {SYS_accept, kInherited},
    unlessFlag(SYS_accept4, kInherited, 3, SOCK_CLOEXEC),
    unlessFlag(SYS_pipe2, kInherited, 1, O_CLOEXEC),
    {SYS_dup, kInherited},
    unlessFlag(SYS_dup3, kInherited, 2, O_CLOEXEC),
    unlessFlag(SYS_eventfd2, kInherited, 1, EFD_CLOEXEC),
    unlessFlag(SYS_epoll_create1, kInherited, 0, EPOLL_CLOEXEC),
    unlessFlag(SYS_timerfd_create, kInherited, 1, TFD_CLOEXEC),
    unlessFlag(SYS_memfd_create, kInherited, 1, MFD_CLOEXEC),
    unlessFlag(SYS_inotify_init1, kInherited, 0, O_CLOEXEC),
    unlessFlag(SYS_signalfd4, kInherited, 3, O_CLOEXEC),
    {SYS_write, kWrites},
    {SYS_writev, kWrites},
    {SYS_pwrite64, kWrites},
    {SYS_pwritev, kWrites},
    unlessFlag(SYS_sendmsg, kSignal, 2, MSG_NOSIGNAL),
    unlessFlag(SYS_sendto, kSignal, 3, MSG_NOSIGNAL),
    {SYS_clone, kStarts},
    {SYS_clone3, kStarts},
    {SYS_execve, kStarts},
    {SYS_execveat, kStarts},
    unlessNull(SYS_rt_sigaction, kChanges, 1),
    unlessNull(SYS_rt_sigprocmask, kChanges, 1),
    unlessNull(SYS_sigaltstack, kChanges, 0),
    {SYS_kill, kChanges},
    {SYS_tkill, kChanges},
    {SYS_tgkill, kChanges},
    {SYS_setitimer, kChanges},
    {SYS_timer_create, kChanges},
    {SYS_chdir, kChanges},
    {SYS_fchdir, kChanges},
    {SYS_umask, kChanges},
    {SYS_prctl, kChanges},
    {SYS_setpriority, kChanges},
    unlessNull(SYS_prlimit64, kChanges, 2),
// Calls that only the older ports of the system have.
#ifdef SYS_open
    unlessFlag(SYS_open, kInherited, 1, O_CLOEXEC),
    {SYS_creat, kInherited},
    {SYS_dup2, kInherited},
    {SYS_pipe, kInherited},
    {SYS_eventfd, kInherited},
    {SYS_epoll_create, kInherited},
    {SYS_inotify_init, kInherited},
    {SYS_signalfd, kInherited},
    {SYS_fork, kStarts},
    {SYS_vfork, kStarts},
    {SYS_alarm, kChanges},
#endif
};

/// The code stands between two of these, as the way there and back makes calls of its own.
constexpr std::int64_t kMark = SYS_getppid;

constexpr int kMayNotBeWatched = 77;

[[noreturn]] void runWatched(const std::function<void()>& prepare,
                             const std::function<void()>& code) {
    prepare();
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        ::_exit(kMayNotBeWatched);
    }
    ::raise(SIGSTOP);
    ::syscall(kMark);
    code();
    ::syscall(kMark);
    ::_exit(0);
}

void judge(const __ptrace_syscall_info& info, WatchedCalls& calls) {
    const auto number = static_cast<std::int64_t>(info.entry.nr);
    ++calls.calls;
    for (const Rule& rule : kRules) {
        if (rule.call == number && !isExcused(rule, info.entry.args[rule.argument])) {
            calls.objections.push_back("call " + std::to_string(number) + ' ' + rule.objection);
        }
    }
}

/// Lets a process run to its end, from call to call.
WatchedCalls follow(pid_t process) {
    WatchedCalls calls;
    int state = 0;
    ::waitpid(process, &state, 0);
    if (!WIFSTOPPED(state)) {
        return calls;
    }
    ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    constexpr int kCall = SIGTRAP | 0x80;
    calls.watched = true;
    int marks = 0;
    int signal = 0;
    while (::ptrace(PTRACE_SYSCALL, process, nullptr, signal) == 0 &&
           ::waitpid(process, &state, 0) == process && WIFSTOPPED(state)) {
        signal = WSTOPSIG(state);
        if (signal != kCall) {
            calls.objections.push_back("signal " + std::to_string(signal));
            continue;
        }
        signal = 0;
        __ptrace_syscall_info info{};
        if (::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) <= 0) {
            calls.watched = false;
        } else if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            if (static_cast<std::int64_t>(info.entry.nr) == kMark) {
                ++marks;
            } else if (marks == 1) {
                judge(info, calls);
            }
        }
    }
    if (marks != 2) {
        calls.objections.push_back("it did not come to its end");
    }
    return calls;
}

}  // namespace

WatchedCalls watchCalls(const std::function<void()>& prepare, const std::function<void()>& code) {
    const pid_t process = ::fork();
    if (process == 0) {
        runWatched(prepare, code);
    }
    return follow(process);
}

}  // namespace Orvel::HostTests
