/// The service behind the scripted RPC client, whose own allocations fail like those of the
/// library: an RPC client may raise exhausted memory anywhere.

#include "memory/answering_service.h"
#include "support/scripted_rpc_client.h"

namespace Orvel::TestSupport {

struct AnsweringService::Impl {
    RpcScript script;
    WideString answer;
};

AnsweringService::AnsweringService() : impl_(std::make_unique<Impl>()) {
    RpcScript& script = impl_->script;
    script.onExecute = [this, &script](const Executed& executed) {
        const bool usual =
            impl_->answer.empty() || executed.command.ends_with(ORVEL_TEXT("::CONNECT_APP::"));
        script.executions.resize(script.executed.size() - 1);
        script.executions.push_back({0, usual ? usualAnswer(executed.command) : impl_->answer});
    };
}

AnsweringService::~AnsweringService() = default;

const char* AnsweringService::client() { return "scripted"; }

void AnsweringService::answerWith(WideString reply) { impl_->answer = std::move(reply); }

std::vector<WideString> AnsweringService::commands() const {
    std::vector<WideString> commands;
    for (const Executed& executed : impl_->script.executed) {
        if (!executed.command.ends_with(ORVEL_TEXT("::CONNECT_APP::"))) {
            commands.push_back(executed.command);
        }
    }
    return commands;
}

void AnsweringService::forget() {
    RpcScript& script = impl_->script;
    decltype(script.executions)().swap(script.executions);
    decltype(script.executed)().swap(script.executed);
    decltype(script.endpoints)().swap(script.endpoints);
    decltype(script.openArguments)().swap(script.openArguments);
    WideString().swap(impl_->answer);
}

}  // namespace Orvel::TestSupport
