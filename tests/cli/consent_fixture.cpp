#include "cli/consent_fixture.h"

#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"
#include "support/consent_documents.h"

namespace Orvel::Tool {

ConsentTest::ConsentTest() : record(TestSupport::consentDocument()) {
    script.onExecute = [this](const TestSupport::Executed& executed) {
        const std::string command = toUtf8(executed.command);
        if (command.find("::CONNECT_APP::") == std::string::npos || replies.contains("CONNECT")) {
            script.executions.resize(script.executed.size() - 1);
            script.executions.push_back({0, toWide(replyTo(command))});
        }
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
