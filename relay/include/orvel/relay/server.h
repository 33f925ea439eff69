#ifndef ORVEL_RELAY_SERVER_H
#define ORVEL_RELAY_SERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "orvel/relay/text.h"

/// @file
/// The server side of the relay: listens at an endpoint and hands commands to conversations.

namespace Orvel::Relay::Server {

/// Who is at the other end of a connection, as the operating system knows it (SO_PEERCRED).
struct Peer {
    std::int64_t processId = 0;
    std::uint32_t userId = 0;
    std::uint32_t groupId = 0;
};

/// The answer to one command.
struct Answer {
    /// 0 when `text` is the reply; otherwise the status that the client's `ExecuteCommand` returns.
    std::int32_t status = 0;
    WideString text;
};

/// What the server talks about on one connection. Made when a client has connected and destroyed
/// when the connection ends; its operations run on the server's worker threads, one at a time.
class Conversation {
  public:
    virtual ~Conversation() = default;

    /// Answers one command. An exception ends the connection.
    virtual Answer execute(const WideString& target, std::uint32_t argument,
                           WideString command) = 0;
};

/// Makes the conversation of a new connection; called on a worker thread.
using ConversationFactory = std::function<std::unique_ptr<Conversation>(const Peer&)>;

/// What the server allows and how long it waits.
struct Options {
    /// The longest command or reply, in bytes of UTF-16; announced to each client.
    std::uint32_t largestBody = std::uint32_t{1} << 30;
    /// Connections served at a time; further ones are closed at once.
    std::size_t connections = 1024;
    /// Threads that execute commands.
    std::size_t workers = 4;
    /// A connection on which nothing arrives for this long is closed.
    std::chrono::milliseconds idleDeadline = std::chrono::minutes{5};
    /// A frame that has begun must make progress within this time.
    std::chrono::milliseconds frameDeadline = std::chrono::seconds{10};
    /// While a command is being executed, the client hears from the server this often.
    std::chrono::milliseconds progressInterval = std::chrono::seconds{2};
};

/// A server of one endpoint.
class Server {
  public:
    /// Listens at the endpoint's socket; its folder is made when it is missing.
    /// @throws std::system_error when the endpoint cannot be used, a running server there included
    ///     (`EADDRINUSE`). A socket left behind by a server that died is taken over.
    Server(const std::filesystem::path& socket, ConversationFactory factory, Options options = {});
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    /// Serves on the calling thread and the workers until `stop`. Commands that are being executed
    /// then are finished and answered first.
    void run();

    /// Ends `run`. Any thread, and safe in a signal handler's stead through `stopOnSignals`.
    void stop();

    /// Makes SIGTERM and SIGINT end `run`; to be called before `run`.
    void stopOnSignals();

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// Where the server of an endpoint listens: in `ORVEL_RPC_DIRECTORY` when that is set, in
/// `/run/orvel` when the process runs as root, otherwise in `$XDG_RUNTIME_DIR/orvel`.
/// @throws std::invalid_argument when the name has not the form of an endpoint's name, or when no
///     folder is known.
std::filesystem::path endpointSocket(const std::string& endpoint);

}  // namespace Orvel::Relay::Server

#endif
