#ifndef ORVEL_SUPPORT_SCRIPTED_RPC_CLIENT_H
#define ORVEL_SUPPORT_SCRIPTED_RPC_CLIENT_H

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "orvel/relay/rpc_client.h"

/// An RPC client without a service: a test says what it answers and reads what it was asked.
namespace Orvel::TestSupport {

/// The outcome of one `ExecuteCommand`. Without a reply, the caller's text stays as it was.
struct Execution {
    std::int32_t status = 0;
    std::optional<Relay::WideString> reply;
};

/// One `ExecuteCommand` as it arrived.
struct Executed {
    Relay::WideString target;
    std::uint32_t argument = 0;
    Relay::WideString command;
};

/// What the clients of this process answer, and what became of them. One for each test.
struct ORVEL_RELAY_EXPORT RpcScript {
    /// The script in force is the one made last of those that are still there.
    RpcScript();
    RpcScript(const RpcScript&) = delete;
    RpcScript& operator=(const RpcScript&) = delete;
    ~RpcScript();

    /// The answers to the commands, the handshake included, in their order. When there is none
    /// left, a handshake is acknowledged and everything else succeeds.
    std::vector<Execution> executions;
    std::int32_t openStatus = 0;
    std::int32_t closeStatus = 0;
    bool yieldsNoClient = false;
    /// Called before each command is answered; it may throw.
    std::function<void(const Executed&)> onExecute;
    /// Called when a client is asked for.
    std::function<void()> onClient;

    std::vector<Relay::WideString> endpoints;
    std::vector<Relay::WideString> openArguments;
    std::vector<Executed> executed;
    int closed = 0;
    int clientsAlive = 0;

  private:
    RpcScript* const previous_;
};

}  // namespace Orvel::TestSupport

#endif
