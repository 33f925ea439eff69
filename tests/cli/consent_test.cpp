#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cli/consent_fixture.h"
#include "cli/service_probe.h"
#include "orvel/relay/rpc_client.h"
#include "support/consent_documents.h"

namespace Orvel::Tool {
namespace {

namespace Status = Relay::Status;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

TEST_F(ConsentTest, GetShowsTheRecord) {
    const ToolRun result = run({"consent", "get"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_EQ(result.out,
              "marketing             accepted\n"
              "support               rejected\n"
              "product enhancement   unknown\n"
              "recorded               2026-01-31, in words \n"
              "source                setup\n"
              "data processing       allowed\n"
              "managed device        no\n"
              "device serial number  SN-1\n"
              "country               PT\n"
              "tenant                tenant 漢\n"
              "privacy statement     https://example.com/privacy\n"
              "warranty              https://example.com/warranty\n"
              "telemetry statement   https://example.com/telemetry\n");
    EXPECT_THAT(commandsWith("::SET_CONSENT::"), IsEmpty());
}

TEST_F(ConsentTest, GetShowsTheOtherSideOfEachSwitchAndEmptyTexts) {
    record["managed"] = true;
    record["process_data"] = false;
    record["tenant"] = "";
    const ToolRun result = run({"consent", "get"});
    EXPECT_THAT(result.out, AllOf(HasSubstr("managed device        yes\n"),
                                  HasSubstr("data processing       not allowed\n"),
                                  HasSubstr("tenant                (none)\n")));
}

TEST_F(ConsentTest, DocumentsShowsTheAddresses) {
    const ToolRun result = run({"documents"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "privacy statement     https://example.com/privacy\n"
              "warranty              https://example.com/warranty\n"
              "telemetry statement   https://example.com/telemetry\n");
}

TEST_F(ConsentTest, TheToolSpeaksForItselfUnlessToldOtherwise) {
    run({"consent", "get"});
    EXPECT_THAT(commandsWith("::GET_CONSENT::"), ElementsAre("orvel-analytics::GET_CONSENT::"));
    run({"consent", "get", "--app", "editor", "--app-version", "2"});
    EXPECT_THAT(commandsWith("editor::"),
                ElementsAre("editor::CONNECT_APP::", "editor::GET_CONSENT::"));
}

TEST_F(ConsentTest, AnApplicationWithoutANameIsWrongUsage) {
    const ToolRun result = run({"consent", "get", "--app", ""});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("App name cannot be null or empty"));
    EXPECT_THAT(script.endpoints, IsEmpty());
}

struct Change {
    std::vector<std::string> options;
    nlohmann::json sent;
};

TEST_F(ConsentTest, SetChangesOnlyWhatIsNamed) {
    using TestSupport::permissionsDocument;
    const std::vector<Change> changes = {
        {{"--marketing", "rejected"}, permissionsDocument("Rejected", "Rejected", "Unknown")},
        {{"--support", "unknown"}, permissionsDocument("Rejected", "Unknown", "Unknown")},
        {{"--product-enhancement", "accepted"},
         permissionsDocument("Rejected", "Unknown", "Accepted")},
        {{"--support=accepted", "--marketing=unknown"},
         permissionsDocument("Unknown", "Accepted", "Accepted")}};
    for (const Change& change : changes) {
        std::vector<std::string> arguments = {"consent", "set"};
        arguments.insert(arguments.end(), change.options.begin(), change.options.end());
        const ToolRun result = run(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(record["processing_permissions"], change.sent);
    }
    EXPECT_THAT(commandsWith("::SET_CONSENT::"), SizeIs(changes.size()));
}

TEST_F(ConsentTest, SetSendsExactlyThePermissionsDocument) {
    run({"consent", "set", "--marketing", "rejected"});
    EXPECT_THAT(commandsWith("::SET_CONSENT::"),
                ElementsAre(R"(orvel-analytics::SET_CONSENT::{"marketing":"Rejected",)"
                            R"("support":"Rejected","product_enhancement":"Unknown"})"));
}

TEST_F(ConsentTest, SetShowsTheRecordThatTheServiceHasThen) {
    const ToolRun result = run({"consent", "set", "--support", "accepted"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, StartsWith("the consent has been changed\n"
                                       "marketing             accepted\n"
                                       "support               accepted\n"
                                       "product enhancement   unknown\n"
                                       "recorded              changed now\n"));
}

TEST_F(ConsentTest, SetOnAManagedDeviceIsStatus1WithNameAndNumber) {
    record["managed"] = true;
    refuse("SET_CONSENT", "UnableToSetConsentForManagedDevice");
    const ToolRun result = run({"consent", "set", "--marketing", "rejected"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "orvel-analytics: changing the consent failed: UnableToSetConsentForManagedDevice "
              "(19): the device is managed, so consent cannot be changed here\n");
    EXPECT_THAT(result.out, IsEmpty());
}

TEST_F(ConsentTest, SetChangesNothingWhenTheRecordCannotBeRead) {
    refuse("GET_CONSENT", "ApplicationNotSigned");
    EXPECT_EQ(run({"consent", "set", "--marketing", "rejected"}).status, 1);
    replies["GET_CONSENT"] = "app::CONSENT_RECORD::{}";
    EXPECT_EQ(run({"consent", "set", "--marketing", "rejected"}).status, 4);
    EXPECT_THAT(commandsWith("::SET_CONSENT::"), IsEmpty());
}

TEST_F(ConsentTest, AChangeThatCannotBeReadBackIsStillToldOf) {
    leaveAfter(3);
    const ToolRun result = run({"consent", "set", "--marketing", "rejected"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "the consent has been changed\n");
    EXPECT_THAT(result.err, HasSubstr("nobody listens at its endpoint"));
    EXPECT_EQ(record["processing_permissions"]["marketing"], "Rejected");
}

TEST_F(ConsentTest, AnUnreachableServiceIsStatus3WithTheReasonInWords) {
    for (const auto& command : everyCommand()) {
        for (const std::int32_t status :
             {Status::kAccessDenied, Status::kTimeout, Status::kOutOfResources,
              Status::kServerUnavailable, Status::kServerTooBusy, Status::kConnectionLost,
              Status::kProtocolError, Status::kTextTooLong, 87}) {
            script.openStatus = status;
            const ToolRun result = run(command);
            EXPECT_EQ(result.status, 3);
            EXPECT_EQ(result.err, "orvel-analytics: the analytics service cannot be reached: " +
                                      describeStatus(status) + "\n");
            EXPECT_THAT(result.out, IsEmpty());
        }
    }
    EXPECT_THAT(script.executed, IsEmpty());
    EXPECT_EQ(script.closed, 0) << "what was not opened must not be closed";
}

TEST_F(ConsentTest, AnEndpointWithoutAClientIsStatus3) {
    script.yieldsNoClient = true;
    for (const auto& command : everyCommand()) {
        EXPECT_EQ(run(command).status, 3);
    }
}

TEST_F(ConsentTest, AServiceThatGoesAwayAfterTheProbeIsStatus3) {
    for (const auto& command : everyCommand()) {
        script.endpoints.clear();
        script.openStatus = 0;
        leaveAfter(1);
        const ToolRun result = run(command);
        EXPECT_EQ(result.status, 3) << command.front();
        EXPECT_THAT(result.err, HasSubstr("nobody listens at its endpoint"));
        EXPECT_THAT(result.out, IsEmpty());
    }
}

TEST_F(ConsentTest, ARefusalIsStatus1WithNameAndNumber) {
    refuse("GET_CONSENT", "ApplicationNotSigned");
    const ToolRun result = run({"consent", "get"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "orvel-analytics: reading the consent record failed: ApplicationNotSigned (23): the "
              "application is not signed\n");
    EXPECT_THAT(result.out, IsEmpty());
}

TEST_F(ConsentTest, AGenericErrorOfAServiceThatIsStillThereIsStatus1) {
    refuse("GET_CONSENT", "GenericError");
    const ToolRun result = run({"consent", "get"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("reading the consent record failed: GenericError (1)"));
}

TEST_F(ConsentTest, ARefusedConnectionIsToldOf) {
    refuse("CONNECT", "ApplicationIsNotAuthorizedToConnect");
    const ToolRun result = run({"consent", "get"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("ApplicationIsNotAuthorizedToConnect (11)"));
}

TEST_F(ConsentTest, AReplyThatCannotBeReadIsStatus4InWords) {
    for (const char* reply :
         {"", "app::CONSENT_RECORD::[]", "app::CONSENT_RECORD::{", "ErrorCode"}) {
        replies["GET_CONSENT"] = reply;
        const ToolRun result = run({"consent", "get"});
        EXPECT_EQ(result.status, 4) << reply;
        EXPECT_THAT(result.err, StartsWith("orvel-analytics: reading the consent record failed: "
                                           "the service's reply cannot be read: "));
        EXPECT_THAT(result.out, IsEmpty());
    }
}

TEST_F(ConsentTest, AChangeWhoseReplyCannotBeReadIsStatus4) {
    replies["SET_CONSENT"] = "app::SET_CONSENT::ErrorCode";
    const ToolRun result = run({"consent", "set", "--marketing", "rejected"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err,
                HasSubstr("changing the consent failed: the service's reply cannot be"));
    EXPECT_THAT(result.out, IsEmpty());
}

TEST_F(ConsentTest, DocumentsWithoutAllAddressesAreStatus4) {
    record["privacy_documents"].erase("telemetryurl");
    const ToolRun result = run({"documents"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("reading the addresses of the privacy documents failed: the "
                                      "service's reply cannot be read: "));
    EXPECT_THAT(result.out, IsEmpty()) << "half of the addresses must not pass for all";
}

TEST_F(ConsentTest, EveryConnectionIsClosed) {
    for (const auto& command : everyCommand()) {
        run(command);
    }
    EXPECT_EQ(static_cast<std::size_t>(script.closed), script.endpoints.size());
    EXPECT_EQ(script.clientsAlive, 0);
}

/// Everything that could steer a terminal, fake a line, or turn the order of what is read.
constexpr const char* kHostile =
    "a\x1b[2J\r\nmarketing accepted\x7f\xC2\x9B"
    "31m\xD8\x9C\xE2\x80\x8F\xE2\x80\xA8\xE2\x80\xAE\xE2\x81\xA6z";

class HostileRecordTest : public ConsentTest {
  protected:
    HostileRecordTest() {
        for (const char* member :
             {"device_serial_number", "timestamp", "country_code", "tenant", "consent_source"}) {
            record[member] = kHostile;
        }
        for (const char* address : {"privacyurl", "warrantyurl", "telemetryurl"}) {
            record["privacy_documents"][address] = kHostile;
        }
        record["processing_permissions"]["marketing"] = kHostile;
    }

    static void expectHarmless(const std::string& output) {
        for (const char* part :
             {"\x1b", "\r", "\x7f", "\xC2\x9B", "\xD8\x9C", "\xE2\x80\x8F", "\xE2\x80\xA8",
              "\xE2\x80\xAE", "\xE2\x81\xA6", "\nmarketing acc"}) {
            EXPECT_THAT(output, testing::Not(HasSubstr(part)));
        }
    }
};

TEST_F(HostileRecordTest, CannotSteerATerminal) {
    for (const auto& command : everyCommand()) {
        const ToolRun result = run(command);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_THAT(result.out,
                    HasSubstr("a\\x1b[2J\\x0d\\x0amarketing accepted\\x7f\\u009b31m\\u061c\\u200f"
                              "\\u2028\\u202e\\u2066z\n"));
        expectHarmless(result.out);
    }
    EXPECT_THAT(run({"consent", "get"}).out, HasSubstr("marketing             rejected\n"));
}

TEST_F(HostileRecordTest, IsHarmlessAsJsonAndLosesNothing) {
    for (const auto& command : everyCommand()) {
        auto arguments = command;
        arguments.emplace_back("--json");
        const ToolRun result = run(arguments);
        expectHarmless(result.out);
        const auto object = nlohmann::json::parse(result.out);
        const auto& documents = object.contains("consent")
                                    ? object.at("consent").at("privacy_documents")
                                    : object.at("privacy_documents");
        EXPECT_EQ(documents, record["privacy_documents"]);
    }
}

}  // namespace
}  // namespace Orvel::Tool
