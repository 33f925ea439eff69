#include "cli/consent_fixture.h"

#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"
#include "support/consent_documents.h"

namespace Orvel::Tool {

using Analytics::Testing::Executed;
using Analytics::Testing::Execution;
using Analytics::Testing::ScriptedEndpoint;

ConsentTest::ConsentTest() : record(TestSupport::consentDocument()) {
    script.onUnscripted = [this](const Executed& executed) {
        const std::string command = toUtf8(executed.command);
        const bool isGreeting = command.find("::CONNECT_APP::") != std::string::npos;
        return isGreeting && !replies.contains("CONNECT") ? ScriptedEndpoint::usualAnswer(executed)
                                                          : Execution{0, toWide(replyTo(command))};
    };
}

std::string ConsentTest::replyTo(const std::string& command) {
    for (const auto& [token, reply] : replies) {
        if (command.find(token) != std::string::npos) {
            return reply;
        }
    }
    if (command.find("::GET_CONSENT::") != std::string::npos) {
        return "app::CONSENT_RECORD::" + record.dump();
    }
    if (command.find("::SET_CONSENT::") != std::string::npos) {
        record["processing_permissions"] = nlohmann::json::parse(command.substr(command.find('{')));
        record["timestamp"] = "changed now";
        return "app::SUCCESS::";
    }
    return "orvel-analytics::PRIVACY_DOCUMENTS::" + record["privacy_documents"].dump();
}

void ConsentTest::refuse(const std::string& token, const std::string& name) {
    replies[token] = "app::" + token + R"(::{"Results":["ErrorCode :)" + name + R"("]})";
}

void ConsentTest::leaveAfter(std::size_t connections) {
    script.onClient = [this, connections] {
        if (script.endpoints.size() > connections) {
            script.openStatus = Relay::Status::kServerUnavailable;
        }
    };
}

}  // namespace Orvel::Tool
