#include "support/scripted_rpc_client.h"

#include <stdexcept>
#include <utility>

#include "orvel/analytics/text.h"

namespace Orvel::TestSupport {
namespace {

RpcScript* current = nullptr;

Execution defaultExecution(const Relay::WideString& command) {
    constexpr Relay::WideStringView kHandshake = ORVEL_TEXT("::CONNECT_APP::");
    if (command.ends_with(kHandshake)) {
        return {0, command.substr(0, command.size() - kHandshake.size()) + ORVEL_TEXT("::ACK::")};
    }
    return {0, ORVEL_TEXT("::SUCCESS::")};
}

class ScriptedClient final : public Relay::Client::Core::RpcClient {
  public:
    explicit ScriptedClient(RpcScript& script) : script_(script) { ++script_.clientsAlive; }
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;
    ~ScriptedClient() override { --script_.clientsAlive; }

    std::int32_t OpenConnection(Relay::WideString argument) override {
        script_.openArguments.push_back(std::move(argument));
        return script_.openStatus;
    }

    std::int32_t ExecuteCommand(Relay::WideString target, std::uint32_t argument,
                                Relay::WideString command, Relay::WideString& reply) override {
        const std::size_t turn = script_.executed.size();
        script_.executed.push_back({std::move(target), argument, std::move(command)});
        if (script_.onExecute) {
            script_.onExecute(script_.executed.back());
        }
        const Execution execution = turn < script_.executions.size()
                                        ? script_.executions[turn]
                                        : defaultExecution(script_.executed.back().command);
        if (execution.reply) {
            reply = *execution.reply;
        }
        return execution.status;
    }

    std::int32_t CloseConnection() override {
        ++script_.closed;
        return script_.closeStatus;
    }

  private:
    RpcScript& script_;
};

}  // namespace

RpcScript::RpcScript() : previous_(current) { current = this; }

RpcScript::~RpcScript() { current = previous_; }

}  // namespace Orvel::TestSupport

namespace Orvel::Relay::Client::Native {

std::shared_ptr<Core::RpcClient> RpcClient::GetClientForEndpoint(WideString endpoint) {
    TestSupport::RpcScript* const script = TestSupport::current;
    if (script == nullptr) {
        throw std::logic_error("the test has no RpcScript");
    }
    script->endpoints.push_back(std::move(endpoint));
    if (script->onClient) {
        script->onClient();
    }
    if (script->yieldsNoClient) {
        return nullptr;
    }
    return std::make_shared<TestSupport::ScriptedClient>(*script);
}

}  // namespace Orvel::Relay::Client::Native
