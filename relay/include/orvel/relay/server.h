#ifndef ORVEL_RELAY_SERVER_H
#define ORVEL_RELAY_SERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "orvel/relay/text.h"

/// @file
/// The server side of the relay: listens at an endpoint and hands commands to conversations.

namespace Orvel::Relay::Server {

/// Who is at the other end of a connection, as the operating system knows it (SO_PEERCRED), and
/// what it said when it connected.
struct Peer {
    std::int64_t processId = 0;
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
    /// The argument of the client's `OpenConnection`.
    WideString argument;
};

/// The answer to one command.
struct Answer {
    /// 0 when `text` is the reply; otherwise the status that the client's `ExecuteCommand` returns.
    std::int32_t status = 0;
    /// Not sent with another status than 0.
    WideString text;
};

/// What the server talks about on one connection. Made when a client has connected and destroyed
/// when the connection ends.
class Conversation {
  public:
    /// Called on one of the server's threads: it must not block.
    virtual ~Conversation() = default;

    /// Answers one command. Called on the server's worker threads, one command at a time. An
    /// exception ends the connection, and nothing else.
    virtual Answer execute(const WideString& target, std::uint32_t argument,
                           WideString command) = 0;
};

/// Makes the conversation of a new connection. Called on the server's worker threads, for several
/// connections at a time, so that connecting costs no client a change of threads: it must not
/// block.
/// @return the conversation; null to refuse the client, whose `OpenConnection` then returns 5
///     (access denied). An exception ends the connection.
using ConversationFactory = std::function<std::unique_ptr<Conversation>(const Peer&)>;

/// What the server allows and how long it waits.
struct Options {
    /// The longest command or reply, in bytes of UTF-16, at most 1 GiB; announced to each client.
    std::uint32_t largestBody = std::uint32_t{1} << 30;
    /// Connections served at a time; further ones are refused with status 1723 (server too busy).
    std::size_t connections = 1024;
    /// Commands that are executed at a time; at least 1. There is one worker thread more than that.
    std::size_t workers = 4;
    /// A connection on which nothing arrives for this long is closed.
    std::chrono::milliseconds idleDeadline = std::chrono::minutes{5};
    /// A frame that has begun, in either direction, must make progress within this time. So must a
    /// new connection's greeting.
    std::chrono::milliseconds frameDeadline = std::chrono::seconds{10};
    /// A frame that has begun, in either direction, must be through within this time.
    std::chrono::milliseconds wholeFrameDeadline = std::chrono::seconds{60};
    /// While a command is being executed, the client hears from the server this often.
    std::chrono::milliseconds progressInterval = std::chrono::seconds{2};
    /// Who may connect, as the mode of the socket's file: by default every user of the machine who
    /// can reach its folder.
    std::uint32_t socketMode = 0666;
    /// The group of the socket's file; that of the process when nothing is said.
    std::optional<std::uint32_t> socketGroup;
};

/// A socket that somebody else has made, and listens at already, for this process.
struct HandedOverSocket {
    /// Owned by whoever it is given to.
    int descriptor = -1;
};

/// The socket with which whoever started this process handed it over its clients (socket
/// activation): descriptor 3, when LISTEN_PID and LISTEN_FDS say so as they do for sd_listen_fds.
/// These variables are removed. To be called once, before there are other threads.
/// @return nothing when nothing was handed over.
/// @throws std::system_error when it was more than one socket, or is none.
std::optional<HandedOverSocket> takeHandedOverSocket();

/// A server of one endpoint.
class Server {
  public:
    /// Listens at the endpoint's socket. Its folder is made when it is missing: open to all users
    /// when the process runs as root, otherwise to its own user only. Beside the socket stands a
    /// lock file, which is locked for as long as the server lives and then left there.
    /// @throws std::system_error when the endpoint cannot be used, a running server there included
    ///     (`EADDRINUSE`), or its folder is another user's, or open to all users (`EPERM`). A
    ///     socket left behind by a server that died is taken over; a file of another kind is not
    ///     (`ENOTSOCK`).
    /// @throws std::invalid_argument when an option is out of its range.
    Server(const std::filesystem::path& socket, ConversationFactory factory, Options options = {});
    /// Serves the clients who come to a socket that was handed over. Its file, with its mode and
    /// group, stays as it is; whoever comes after `stop` waits for who listens there next.
    /// @throws std::system_error when it is no Unix domain stream socket that listens.
    /// @throws std::invalid_argument when an option is out of its range.
    Server(HandedOverSocket socket, ConversationFactory factory, Options options = {});
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    /// Removes the socket if `run` has not. Not to be called while `run` is running.
    ~Server();

    /// Where clients connect: the path of the socket's file, empty when it has none.
    std::filesystem::path socket() const;

    /// Serves on the calling thread and the workers until `stop`; called once. New connections are
    /// then refused, idle ones closed, and commands that had arrived whole are executed and
    /// answered first. The socket's file is removed, if it is the server's own.
    /// @throws std::system_error when the workers cannot be started.
    void run();

    /// Ends `run`, which it does not wait for; before `run`, makes it end at once. Any thread. A
    /// signal handler must not call it: that is what `stopOnSignals` is for.
    /// @throws std::bad_alloc, and `run` goes on.
    void stop();

    /// Makes SIGTERM and SIGINT end `run`; to be called before `run`.
    void stopOnSignals();

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// Where the server of an endpoint listens: in the folder `ORVEL_RPC_DIRECTORY` when that is set,
/// in
/// `/run/orvel` when the process runs as root, otherwise in `$XDG_RUNTIME_DIR/orvel`.
/// @throws std::invalid_argument when the name has not the form of an endpoint's name, or when no
///     folder is known.
std::filesystem::path endpointSocket(const std::string& endpoint);

}  // namespace Orvel::Relay::Server

#endif
