#ifndef ORVEL_RELAY_RPC_CLIENT_H
#define ORVEL_RELAY_RPC_CLIENT_H

#include <cstdint>
#include <memory>

#include "orvel/relay/export.h"
#include "orvel/relay/text.h"

/// @file
/// The RPC client: the only way to the analytics service of this machine.
///
/// Results are system error codes: `Orvel::Relay::Status` names those that this library gives. No
/// operation throws for a failing server; only exhausted memory is raised, as `std::bad_alloc`,
/// with no connection open any more.

/// @namespace Orvel::Relay
/// The conversation between an application and the services of its machine.

/// @namespace Orvel::Relay::Client
/// The side of the application.

/// @namespace Orvel::Relay::Client::Core
/// What a client does, whoever made it.

/// @namespace Orvel::Relay::Client::Native
/// How a client is made.

namespace Orvel::Relay {

/// The statuses of this library, each the number of the system error code of that meaning (the
/// platform documentation's "System Error Codes").
namespace Status {

/// The operation succeeded.
inline constexpr std::int32_t kSuccess = 0;
/// The endpoint is there, but this user may not connect to it, or somebody serves it whom this user
/// has no reason to trust (ERROR_ACCESS_DENIED).
inline constexpr std::int32_t kAccessDenied = 5;
/// The server gave no answer within the deadline (ERROR_TIMEOUT).
inline constexpr std::int32_t kTimeout = 1460;
/// This process has no descriptor or memory left for a connection (RPC_S_OUT_OF_RESOURCES).
inline constexpr std::int32_t kOutOfResources = 1721;
/// Nothing is at the endpoint, or nobody listens there (RPC_S_SERVER_UNAVAILABLE).
inline constexpr std::int32_t kServerUnavailable = 1722;
/// The server has as many connections as it serves at a time (RPC_S_SERVER_TOO_BUSY).
inline constexpr std::int32_t kServerTooBusy = 1723;
/// The connection was lost, or was not open (RPC_S_CALL_FAILED).
inline constexpr std::int32_t kConnectionLost = 1726;
/// The other side sent what is no frame of this protocol (RPC_S_PROTOCOL_ERROR).
inline constexpr std::int32_t kProtocolError = 1728;
/// A text is longer than what may be sent (RPC_S_STRING_TOO_LONG).
inline constexpr std::int32_t kTextTooLong = 1743;

}  // namespace Status

namespace Client::Core {

/// One client of one endpoint. It holds at most one connection.
///
/// Threads: a client is used by one thread at a time; different clients are independent. Every
/// operation blocks the calling thread, for no longer than its deadlines: 2 seconds to connect, 10
/// without a byte moving, 60 in all. The 60 seconds begin anew whenever the server says that it is
/// still working, for an hour at the most. No operation starts a thread, prints, raises a signal,
/// runs what is queued to the calling thread or changes `errno` (nor, on Windows, the thread's last
/// error).
///
/// A process that forks while a connection is open uses it, and closes it, on one side only; a
/// program that it executes does not have it.
class RpcClient {
  public:
    /// Closes the connection if one is open.
    virtual ~RpcClient() = default;

    /// Connects to the endpoint's server and greets it.
    /// @param argument handed to the server as it is, at most 4,096 code units; the analytics
    ///     service expects an empty text.
    /// @return 0, or a status. After a failure nothing is open, and the operation can be tried
    ///     again. Opening an open connection closes the earlier one first.
    virtual std::int32_t OpenConnection(WideString argument) = 0;

    /// Sends one command and waits for its reply.
    /// @param target the part of the server that the command is for; at most 4,096 code units.
    /// @param argument a number handed on with the command; the analytics service expects 0.
    /// @param command the text of the command, at most as long as the server announced.
    /// @param reply overwritten with the server's reply on success, and untouched otherwise.
    /// @return 0 when the command was delivered and the reply written, otherwise a status. The
    ///     connection stays open when the server refused the command with a status of its own, and
    ///     after `Status::kTextTooLong`, for which nothing was sent. After any other status it is
    ///     closed, and so it is when the server refused a command before it had taken all of it.
    ///     `Status::kConnectionLost` is also the status when no connection is open.
    virtual std::int32_t ExecuteCommand(WideString target, std::uint32_t argument,
                                        WideString command, WideString& reply) = 0;

    /// Closes the connection.
    /// @return 0, or `Status::kConnectionLost` when none was open.
    virtual std::int32_t CloseConnection() = 0;
};

}  // namespace Client::Core

namespace Client::Native {

/// The maker of clients.
class RpcClient {
  public:
    /// There are no objects of this class.
    RpcClient() = delete;

    /// Makes a client for an endpoint. Nothing is connected yet.
    /// @param endpoint the endpoint's name: 1 to 64 of the characters `A-Z a-z 0-9 . _ -`. A name
    ///     of another form makes a client that finds no server.
    /// @return the client, owned by whoever holds the handle; never null. Any thread may make one;
    ///     nothing is connected and nothing blocks.
    /// @throws std::bad_alloc
    ORVEL_RELAY_EXPORT static std::shared_ptr<Core::RpcClient> GetClientForEndpoint(
        WideString endpoint);
};

}  // namespace Client::Native

}  // namespace Orvel::Relay

#endif
