/// The service of a program that a test starts: it accepts everything and has one consent record,
/// which no command changes.

#include "orvel/analytics/testing/scripted_endpoint.h"
#include "orvel/analytics/text.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Testing::Executed;
using Analytics::Testing::Execution;
using Analytics::Testing::ScriptedEndpoint;

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

Execution answer(const Executed& executed) {
    const WideString& command = executed.command;
    const WideString application = command.substr(0, command.find(ORVEL_TEXT("::")));
    if (command.ends_with(ORVEL_TEXT("::GET_CONSENT::"))) {
        return {0, application + ORVEL_TEXT("::CONSENT_RECORD::") + record(application)};
    }
    if (command.ends_with(ORVEL_TEXT("::GET_PRIVACY_DOCUMENTS::"))) {
        return {0, application + ORVEL_TEXT("::PRIVACY_DOCUMENTS::") + WideString(kDocuments)};
    }
    return ScriptedEndpoint::usualAnswer(executed);
}

class UnscriptedService {
  public:
    UnscriptedService() { endpoint_.onUnscripted = answer; }

  private:
    ScriptedEndpoint endpoint_;
};

UnscriptedService service;

}  // namespace
}  // namespace Orvel::TestSupport
