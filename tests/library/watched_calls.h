#ifndef ORVEL_LIBRARY_WATCHED_CALLS_H
#define ORVEL_LIBRARY_WATCHED_CALLS_H

#include <functional>
#include <string>
#include <vector>

/// @file
/// What code asks of the operating system: more than is left of it afterwards.

namespace Orvel::HostTests {

/// What a guest in somebody's process should not have asked for, or what became of it.
struct WatchedCalls {
    /// Whether this process may watch others; otherwise nothing is known.
    bool watched = false;
    /// How many calls were seen.
    int calls = 0;
    /// Each call that makes a descriptor that other programs inherit, writes to a descriptor other
    /// than by a message without a signal, starts a thread or a process, or changes signals, timers
    /// or the process; and each signal that came.
    std::vector<std::string> objections;
};

/// Runs code in a process of its own and looks at its calls.
/// @param prepare runs there before, unwatched.
WatchedCalls watchCalls(const std::function<void()>& prepare, const std::function<void()>& code);

}  // namespace Orvel::HostTests

#endif
