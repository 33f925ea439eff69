/// Every operation of a session, with texts and lists that go over to the library and back.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <utility>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/consent_documents.h"
#include "support/data_classes.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Emitters::AnalyticsResult;
using Analytics::Testing::ScriptedEndpoint;
using nlohmann::json;
using PermissionValue = ProcessingPermissions::ProcessingPermissionValue;

/// Longer than what a string holds without memory of its own.
const WideString kName = ORVEL_TEXT("An application whose name is long, 漢字 and \U0001F600");
const WideString kUser = ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950e}");

class LibrarySession : public testing::Test {
  protected:
    void replyWith(const std::string& reply) {
        script.executed.clear();
        script.executions = {{0, kName + ORVEL_TEXT("::ACK::")}, {0, kName + toWide(reply)}};
    }

    /// What follows the application's name and a token in the command sent last.
    std::string lastSent(const WideString& token) const {
        const WideString& command = script.executed.back().command;
        EXPECT_TRUE(command.starts_with(kName + token)) << toUtf8(command);
        return toUtf8(command.substr(kName.size() + token.size()));
    }

    json events(AnalyticsSession& from) {
        EXPECT_EQ(from.SendEvents(), AnalyticsResult::Success);
        return json::parse(lastSent(ORVEL_TEXT("::COLLECT_DATACLASS::"))).at("events").at(0);
    }

    ScriptedEndpoint script;
    AnalyticsSession session{kName, ORVEL_TEXT("1.2"), kUser, ORVEL_TEXT("by hand")};
    TestDataClass dataClass{{field(ORVEL_TEXT("count"), ORVEL_TEXT("integer")),
                             field(ORVEL_TEXT("text of a longer name"), ORVEL_TEXT("varchar(3)"))}};
};

TEST_F(LibrarySession, RegistersTheFieldsThatTheApplicationLists) {
    EXPECT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::Success);
    const json document = json::parse(lastSent(ORVEL_TEXT("::REGISTER_DATACLASS::")));
    ASSERT_EQ(document.at("fields").size(), 2U);
    EXPECT_EQ(document.at("fields").at(1).at("id"), "text of a longer name");
    EXPECT_EQ(dataClass.timesAsked, 1);
    script.openStatus = 1722;
    EXPECT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::ServiceUnavailable);
}

TEST_F(LibrarySession, CollectsAndSendsEvents) {
    EXPECT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"count\":1,\"t\":\"漢\U0001F600\"}")),
              AnalyticsResult::Success);
    EXPECT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"text of a longer name\":\"long\"}")),
              AnalyticsResult::FieldValueTooLong);
    EXPECT_EQ(session.CollectEvent(&dataClass, {}), AnalyticsResult::EmptyEvent);
    const json batch = events(session);
    EXPECT_EQ(batch.at("appsession").at("1"), toUtf8(kName));
    EXPECT_EQ(batch.at("appsession").at("5"), toUtf8(kUser));
    ASSERT_EQ(batch.at("data").size(), 1U);
    EXPECT_EQ(batch.at("data").at(0).at("Evt").at("t"), "漢\U0001F600");
}

TEST_F(LibrarySession, ReadsTheConsentRecord) {
    replyWith("::CONSENT_RECORD::" + consentDocument().dump());
    ConsentObject consent;
    EXPECT_EQ(session.GetConsent(&consent), AnalyticsResult::Success);
    EXPECT_EQ(consent.tenant, ORVEL_TEXT("tenant 漢"));
    EXPECT_TRUE(consent.processData);
    EXPECT_EQ(consent.privacyDocuments.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(consent.processingPermissions.support, PermissionValue::Rejected);
}

TEST_F(LibrarySession, ChangesThePermissions) {
    ProcessingPermissions permissions;
    permissions.marketing = PermissionValue::Accepted;
    EXPECT_EQ(session.SetConsent(permissions), AnalyticsResult::Success);
    EXPECT_EQ(json::parse(lastSent(ORVEL_TEXT("::SET_CONSENT::"))),
              permissionsDocument("Accepted", "Unknown", "Unknown"));
    replyWith(R"(::SET_CONSENT::{"Results":["ErrorCode :UnableToSetConsentForManagedDevice"]})");
    EXPECT_EQ(session.SetConsent(permissions), AnalyticsResult::UnableToSetConsentForManagedDevice);
}

TEST_F(LibrarySession, ReadsTheAddressesOfTheDocuments) {
    replyWith("::PRIVACY_DOCUMENTS::" + privacyDocument().dump());
    PrivacyDocuments documents;
    EXPECT_EQ(session.GetDocumentURLs(&documents), AnalyticsResult::Success);
    EXPECT_EQ(documents.telemetryUrl, ORVEL_TEXT("https://example.com/telemetry"));
}

TEST_F(LibrarySession, TakesItsTimes) {
    EXPECT_EQ(session.SetStartTime(INT64_MAX), AnalyticsResult::StartTimeInFuture);
    EXPECT_EQ(session.SetStartTime(1'700'000'000), AnalyticsResult::Success);
    EXPECT_EQ(session.SetEndTime(1'699'999'999), AnalyticsResult::EndTimeBeforeStartTime);
    EXPECT_EQ(session.SetEndTime(1'700'000'000), AnalyticsResult::Success);
}

TEST_F(LibrarySession, IsCopiedWithItsQueue) {
    ASSERT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"count\":1}")),
              AnalyticsResult::Success);
    AnalyticsSession copy(session);
    AnalyticsSession assigned(ORVEL_TEXT("other"), ORVEL_TEXT("1"));
    assigned = session;
    for (AnalyticsSession* const each : {&session, &copy, &assigned}) {
        EXPECT_EQ(events(*each).at("data").size(), 1U);
    }
}

TEST_F(LibrarySession, IsMovedWithItsQueue) {
    ASSERT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"count\":1}")),
              AnalyticsResult::Success);
    AnalyticsSession moved(std::move(session));
    AnalyticsSession assigned(ORVEL_TEXT("other"), ORVEL_TEXT("1"));
    assigned = std::move(moved);
    EXPECT_EQ(events(assigned).at("data").size(), 1U);
}

TEST_F(LibrarySession, ClosesEveryConnection) {
    session.RegisterDataClass(&dataClass);
    session.SendEvents();
    EXPECT_EQ(script.closed, 2);
    EXPECT_EQ(script.clientsAlive, 0);
    EXPECT_EQ(script.endpoints.front(), ORVEL_TEXT("OrvelAnalyticsRpcEndpoint"));
}

}  // namespace
}  // namespace Orvel::TestSupport
