#ifndef ORVEL_SERVER_WORKERS_H
#define ORVEL_SERVER_WORKERS_H

#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

#include "relay/server/descriptor.h"
#include "relay/server/session.h"

namespace Orvel::Relay::Server {

/// The sessions of a server and the threads that serve them. All threads wait for the door, where
/// new clients come, and for all sessions, and whichever wakes up serves: it reads a command,
/// executes it and answers it, so that no command changes threads. Then it waits a moment for that
/// client alone, which mostly goes on at once. There is one thread more than may do so at a time,
/// so that somebody is left for the others.
class Workers {
  public:
    /// What a server does when something happens. Called on any of the threads.
    struct Events {
        /// Somebody is at the door, which is not watched any more.
        std::function<void()> knock;
        /// The last session has ended.
        std::function<void()> empty;
    };

    /// @param door a socket that listens. Nobody waits for it yet.
    /// @param executing how many commands are executed at a time.
    /// @param sessions how many there are at most.
    /// @throws std::system_error when the threads cannot be started.
    Workers(int door, std::size_t executing, std::size_t sessions, Events events);
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;
    /// Waits for commands that are being executed.
    ~Workers();

    /// Waits for the next client to come.
    void watchDoor();

    /// Begins a session, and serves it on the calling thread, one of the workers.
    /// @param client its socket; taken over only if a session was begun.
    /// @return whether there was room for one more.
    bool serve(Descriptor& client, const Service& service);

    /// Lets each session see to what is due by now.
    void look(Session::TimePoint now);

    /// Stops each session, and begins none any more.
    /// @return how many have not ended yet.
    std::size_t stop();

  private:
    struct Client {
        Client(Descriptor socket, const Service& service) : session(std::move(socket), service) {}

        Session session;
        // Whether it was ever waited for together with the others.
        bool watched = false;
        std::list<Client>::iterator place;
        // Its place in the queue, made beforehand: queueing must not fail.
        std::list<Client*> ticket{this};
    };

    void work();
    void serve(Client& client, Session::Next next);
    Session::Next talk(Session& session, Session::Next next);
    bool begin(Client& client, Session::Next next);
    bool mayGoOn(Session::Next next);
    Client* nextInTurn();
    void putOff(Client& client, Session::Next next);
    void enqueue(Client& client);
    void end(Client& client);
    void finish() noexcept;

    const int door_;
    const std::size_t mostExecuting_;
    const std::size_t mostClients_;
    const Events events_;
    Descriptor poll_;
    Descriptor finishing_;

    std::mutex clientsMutex_;
    std::list<Client> clients_;
    bool stopping_ = false;

    // Of the threads that execute commands or wait for a single client, and of the clients whose
    // commands wait for one of them.
    std::mutex turnsMutex_;
    std::size_t engaged_ = 0;
    std::list<Client*> queue_;

    std::vector<std::thread> threads_;
};

}  // namespace Orvel::Relay::Server

#endif
