#ifndef ORVEL_SERVER_WORKERS_H
#define ORVEL_SERVER_WORKERS_H

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "relay/server/descriptor.h"
#include "relay/server/session.h"

namespace Orvel::Relay::Server {

/// The sessions of a server and the threads that serve them. All threads wait for all sessions, and
/// whichever wakes up for a command reads it, executes it and answers it: no command changes
/// threads. There is one thread more than may execute commands at a time, so that somebody is left
/// to listen.
class Workers {
  public:
    /// @param executing how many commands are executed at a time.
    /// @param sessions how many there will be at most.
    /// @param ended called, on any thread, when the last session has ended.
    /// @throws std::system_error when the threads cannot be started.
    Workers(std::size_t executing, std::size_t sessions, std::function<void()> ended);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    /// Waits for commands that are being executed.
    ~Workers();

    /// Serves a session, beginning at once on the calling thread.
    void add(std::shared_ptr<Session> session);

    std::size_t sessions() const;

    /// Calls a function, which must not block, for each session.
    void forEach(const std::function<void(Session&)>& visit) const;

  private:
    void work();
    void execute(Session* session);
    void settle(Session& session, Session::Next next, int operation);
    void end(Session& session);
    void finish() noexcept;

    const std::size_t mostExecuting_;
    std::function<void()> ended_;
    Descriptor poll_;
    Descriptor finishing_;

    mutable std::mutex sessionsMutex_;
    std::unordered_map<const Session*, std::shared_ptr<Session>> sessions_;

    // Sessions whose commands wait for one of those that are being executed; none otherwise.
    std::mutex queueMutex_;
    std::vector<Session*> queue_;
    std::size_t executing_ = 0;

    std::vector<std::thread> threads_;
};

}  // namespace Orvel::Relay::Server

#endif
