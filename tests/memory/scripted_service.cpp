/// The service behind the scripted endpoint, whose own allocations fail like those of the
/// library: an RPC client may raise exhausted memory anywhere.

#include "memory/answering_service.h"
#include "orvel/analytics/testing/scripted_endpoint.h"

namespace Orvel::TestSupport {

using Analytics::Testing::Executed;
using Analytics::Testing::Execution;
using Analytics::Testing::ScriptedEndpoint;

struct AnsweringService::Impl {
    ScriptedEndpoint script;
    WideString answer;
};

AnsweringService::AnsweringService() : impl_(std::make_unique<Impl>()) {
    impl_->script.onUnscripted = [this](const Executed& executed) {
        const bool usual =
            impl_->answer.empty() || executed.command.ends_with(ORVEL_TEXT("::CONNECT_APP::"));
        return Execution{0, usual ? usualAnswer(executed.command) : impl_->answer};
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
    ScriptedEndpoint& script = impl_->script;
    decltype(script.executed)().swap(script.executed);
    decltype(script.endpoints)().swap(script.endpoints);
    decltype(script.openArguments)().swap(script.openArguments);
    WideString().swap(impl_->answer);
}

}  // namespace Orvel::TestSupport
