/// What the RPC client's double answers in a program without a script: a service that accepts
/// everything and has one consent record, which no command changes.

#include "orvel/analytics/text.h"
#include "support/scripted_rpc_client.h"

namespace Orvel::TestSupport {
namespace {

using Relay::WideString;
using Relay::WideStringView;

constexpr WideStringView kPermissions =
    ORVEL_TEXT(R"({"marketing":"Accepted","support":"Rejected","product_enhancement":"Unknown"})");
constexpr WideStringView kDocuments =
    ORVEL_TEXT(R"({"privacyurl":"https://example.com/privacy",)"
               R"("warrantyurl":"https://example.com/warranty",)"
               R"("telemetryurl":"https://example.com/telemetry"})");

/// @param application who asks; the record names it as its source, so that a test sees it.
WideString record(const WideString& application) {
    return ORVEL_TEXT(R"({"device_serial_number":"SN-1","timestamp":"20260131T235959",)"
                      R"("country_code":"PT","process_data":true,"managed":false,)"
                      R"("tenant":"tenant","consent_source":")") +
           application + ORVEL_TEXT(R"(","privacy_documents":)") + WideString(kDocuments) +
           ORVEL_TEXT(R"(,"processing_permissions":)") + WideString(kPermissions) + ORVEL_TEXT("}");
}

class UnscriptedService {
  public:
    UnscriptedService() {
        script_.onExecute = [this](const Executed& executed) { answer(executed.command); };
    }

  private:
    void answer(const WideString& command) {
        const WideString application = command.substr(0, command.find(ORVEL_TEXT("::")));
        if (command.ends_with(ORVEL_TEXT("::GET_CONSENT::"))) {
            reply(application + ORVEL_TEXT("::CONSENT_RECORD::") + record(application));
        } else if (command.ends_with(ORVEL_TEXT("::GET_PRIVACY_DOCUMENTS::"))) {
            reply(application + ORVEL_TEXT("::PRIVACY_DOCUMENTS::") + WideString(kDocuments));
        }
    }

    void reply(WideString text) {
        script_.executions.resize(script_.executed.size() - 1);
        script_.executions.push_back({0, std::move(text)});
    }

    RpcScript script_;
};

/// In force wherever no test has made a script of its own.
UnscriptedService service;

}  // namespace
}  // namespace Orvel::TestSupport
