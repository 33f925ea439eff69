#include "orvel/analytics/testing/scripted_endpoint.h"

#include <utility>

#include "testing/endpoint.h"
#include "testing/protocol.h"

namespace Orvel::Analytics::Testing {
namespace {

class ScriptedClient final : public Relay::Client::Core::RpcClient {
  public:
    explicit ScriptedClient(ScriptedEndpoint& script) : script_(script) { ++script_.clientsAlive; }
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;
    ~ScriptedClient() override { --script_.clientsAlive; }

    std::int32_t OpenConnection(WideString argument) override {
        script_.openArguments.push_back(std::move(argument));
        return script_.openStatus;
    }

    std::int32_t ExecuteCommand(WideString target, std::uint32_t argument, WideString command,
                                WideString& reply) override {
        const std::size_t turn = script_.executed.size();
        script_.executed.push_back({std::move(target), argument, std::move(command)});
        if (script_.onExecute) {
            script_.onExecute(script_.executed.back());
        }
        Execution execution = answer(turn);
        if (execution.reply) {
            reply = std::move(*execution.reply);
        }
        return execution.status;
    }

    std::int32_t CloseConnection() override {
        ++script_.closed;
        return script_.closeStatus;
    }

  private:
    Execution answer(std::size_t turn) {
        if (turn < script_.executions.size()) {
            return script_.executions[turn];
        }
        const Executed& executed = script_.executed.back();
        return script_.onUnscripted ? script_.onUnscripted(executed)
                                    : ScriptedEndpoint::usualAnswer(executed);
    }

    ScriptedEndpoint& script_;
};

}  // namespace

class ScriptedEndpoint::Clients final : public Endpoint {
  public:
    explicit Clients(ScriptedEndpoint& script) : script_(script), inForce_(*this) {}

    std::shared_ptr<Relay::Client::Core::RpcClient> newClient(WideString endpoint) override {
        script_.endpoints.push_back(std::move(endpoint));
        if (script_.onClient) {
            script_.onClient();
        }
        if (script_.yieldsNoClient) {
            return nullptr;
        }
        return std::make_shared<ScriptedClient>(script_);
    }

  private:
    ScriptedEndpoint& script_;
    const InForce inForce_;
};

ScriptedEndpoint::ScriptedEndpoint() : clients_(std::make_unique<Clients>(*this)) {}

ScriptedEndpoint::~ScriptedEndpoint() = default;

Execution ScriptedEndpoint::usualAnswer(const Executed& executed) {
    const WideStringView command = executed.command;
    if (command.ends_with(Token::kConnect)) {
        WideString reply(command.substr(0, command.size() - Token::kConnect.size()));
        reply += Token::kAcknowledged;
        return {0, std::move(reply)};
    }
    return {0, WideString(Token::kSuccess)};
}

}  // namespace Orvel::Analytics::Testing
