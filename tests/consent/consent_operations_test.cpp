#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/consent_documents.h"

namespace {

using nlohmann::json;
using Orvel::toUtf8;
using Orvel::toWide;
using Orvel::WideString;
using Orvel::Analytics::hresult_error;
using Orvel::Analytics::Testing::ScriptedEndpoint;
using Orvel::TestSupport::consentDocument;
using Orvel::TestSupport::permissionsDocument;
using Orvel::TestSupport::privacyDocument;
using Value = ProcessingPermissions::ProcessingPermissionValue;

const WideString kAcknowledged = ORVEL_TEXT("MyApp::ACK::");
const WideString kNotAuthorized =
    ORVEL_TEXT("MyApp::X::{\"Results\":[\"ErrorCode :ApplicationIsNotAuthorizedToConnect\"]}");

class ConsentOperations : public testing::Test {
  protected:
    ConsentOperations() {
        consent.tenant = ORVEL_TEXT("before");
        consent.managed = true;
        documents.privacyUrl = ORVEL_TEXT("before");
        documents.telemetryUrl = ORVEL_TEXT("before");
    }

    int getConsent() { return static_cast<int>(session.GetConsent(&consent)); }
    int getDocuments() { return static_cast<int>(session.GetDocumentURLs(&documents)); }

    /// The handshake is acknowledged and the command answered so.
    void answer(const std::string& reply) {
        script.executions = {{0, kAcknowledged}, {0, toWide(reply)}};
    }

    void expectConsentUntouched() const {
        EXPECT_EQ(consent.tenant, ORVEL_TEXT("before"));
        EXPECT_TRUE(consent.managed);
        EXPECT_TRUE(consent.deviceSerialNumber.empty());
    }

    ScriptedEndpoint script;
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")};
    ConsentObject consent;
    PrivacyDocuments documents;
};

using GetConsent = ConsentOperations;
using SetConsent = ConsentOperations;
using GetDocumentURLs = ConsentOperations;

TEST_F(GetConsent, FillsAllNineFields) {
    answer("MyApp::CONSENT_RECORD::" + consentDocument().dump());
    EXPECT_EQ(getConsent(), 0);
    EXPECT_EQ(script.executed[1].command, ORVEL_TEXT("MyApp::GET_CONSENT::"));
    EXPECT_EQ(consent.deviceSerialNumber, ORVEL_TEXT("SN-1"));
    EXPECT_EQ(consent.timestamp, ORVEL_TEXT(" 2026-01-31, in words "));
    EXPECT_EQ(consent.countryCode, ORVEL_TEXT("PT"));
    EXPECT_TRUE(consent.processData);
    EXPECT_FALSE(consent.managed);
    EXPECT_EQ(consent.tenant, ORVEL_TEXT("tenant \u6f22"));
    EXPECT_EQ(consent.consentSource, ORVEL_TEXT("setup"));
    EXPECT_EQ(consent.privacyDocuments.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(consent.processingPermissions.support, Value::Rejected);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(GetConsent, ReadsARecordWithoutItsMark) {
    answer(consentDocument().dump());
    EXPECT_EQ(getConsent(), 0);
    EXPECT_EQ(consent.countryCode, ORVEL_TEXT("PT"));
}

TEST_F(GetConsent, LeavesAFilledRecordUntouchedWhenTheServiceRefuses) {
    script.executions = {{0, kAcknowledged}, {0, kNotAuthorized}};
    EXPECT_EQ(getConsent(), 11);
    expectConsentUntouched();
}

TEST_F(GetConsent, LeavesAFilledRecordUntouchedWhenTheServiceCannotBeReached) {
    for (const std::int32_t status : {1722, 5, 1460}) {
        script.openStatus = status;
        EXPECT_EQ(getConsent(), 1);
    }
    script.openStatus = 0;
    script.executions = {{0, kAcknowledged}, {1726, std::nullopt}};
    EXPECT_EQ(getConsent(), 1);
    expectConsentUntouched();
}

TEST_F(GetConsent, LeavesAFilledRecordUntouchedWhenTheHandshakeIsRefused) {
    script.executions = {{0, kNotAuthorized}};
    EXPECT_EQ(getConsent(), 11);
    expectConsentUntouched();
}

TEST_F(GetConsent, RaisesForAHandshakeThatFailedWithoutAnErrorAndLeavesTheRecordUntouched) {
    script.executions = {{0, ORVEL_TEXT("")}};
    EXPECT_THROW(getConsent(), hresult_error);
    expectConsentUntouched();
    EXPECT_EQ(script.closed, 1);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(GetConsent, RaisesForAnIncompleteRecordAndLeavesTheRecordUntouched) {
    json document = consentDocument();
    document["processing_permissions"].erase("support");
    answer("MyApp::CONSENT_RECORD::" + document.dump());
    EXPECT_THROW(getConsent(), hresult_error);
    expectConsentUntouched();
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(GetConsent, RaisesForAReplyThatIsNoRecord) {
    for (const char* reply : {"", "MyApp::CONSENT_RECORD::", "MyApp::CONSENT_RECORD::[]", "{"}) {
        script.executed.clear();
        answer(reply);
        EXPECT_THROW(getConsent(), hresult_error) << reply;
        expectConsentUntouched();
    }
}

TEST_F(SetConsent, SendsThePermissionsDocument) {
    ProcessingPermissions permissions;
    permissions.marketing = Value::Rejected;
    permissions.productEnhancement = Value::Accepted;
    EXPECT_EQ(static_cast<int>(session.SetConsent(permissions)), 0);
    const std::string command = toUtf8(script.executed[1].command);
    const std::string framing = "MyApp::SET_CONSENT::";
    ASSERT_TRUE(command.starts_with(framing));
    EXPECT_EQ(json::parse(command.substr(framing.size())),
              permissionsDocument("Rejected", "Unknown", "Accepted"));
}

TEST_F(SetConsent, SendsUnknownForDefaultPermissions) {
    session.SetConsent({});
    EXPECT_TRUE(script.executed[1].command.ends_with(
        ORVEL_TEXT("{\"marketing\":\"Unknown\",\"support\":\"Unknown\","
                   "\"product_enhancement\":\"Unknown\"}")));
}

TEST_F(SetConsent, ReturnsTheServicesVerdict) {
    answer("MyApp::X::{\"Results\":[\"ErrorCode :UnableToSetConsentForManagedDevice\"]}");
    EXPECT_EQ(static_cast<int>(session.SetConsent({})), 19);
    script.openStatus = 1722;
    EXPECT_EQ(static_cast<int>(session.SetConsent({})), 1);
}

TEST_F(SetConsent, RaisesForAReplyThatCannotBeRead) {
    answer("MyApp::X::ErrorCode");
    EXPECT_THROW(session.SetConsent({}), hresult_error);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(GetDocumentURLs, FillsTheThreeAddresses) {
    answer("MyApp::PRIVACY_DOCUMENTS::" + privacyDocument().dump());
    EXPECT_EQ(getDocuments(), 0);
    EXPECT_EQ(script.executed[1].command, ORVEL_TEXT("MyApp::GET_PRIVACY_DOCUMENTS::"));
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(documents.telemetryUrl, ORVEL_TEXT("https://example.com/telemetry"));
}

TEST_F(GetDocumentURLs, RaisesWhenTheServiceCannotBeReached) {
    for (const std::int32_t status : {1722, 5, 1460}) {
        script.openStatus = status;
        EXPECT_THROW(getDocuments(), hresult_error);
    }
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("before"));
}

TEST_F(GetDocumentURLs, RaisesWhenTheRequestWasRefusedOrNotDelivered) {
    script.executions = {{0, kNotAuthorized}};
    EXPECT_THROW(getDocuments(), hresult_error);
    script.executed.clear();
    script.executions = {{0, kAcknowledged}, {1726, kNotAuthorized}};
    EXPECT_THROW(getDocuments(), hresult_error);
    script.executed.clear();
    script.yieldsNoClient = true;
    EXPECT_THROW(getDocuments(), hresult_error);
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("before"));
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(GetDocumentURLs, KeepsTheAddressesReadBeforeAMissingOne) {
    json document = privacyDocument();
    document.erase("telemetryurl");
    answer("MyApp::PRIVACY_DOCUMENTS::" + document.dump());
    EXPECT_THROW(getDocuments(), hresult_error);
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(documents.telemetryUrl, ORVEL_TEXT("before"));
}

TEST_F(GetDocumentURLs, RaisesForAnErrorReplyThatWasDelivered) {
    script.executions = {{0, kAcknowledged}, {0, kNotAuthorized}};
    EXPECT_THROW(getDocuments(), hresult_error);
}

TEST_F(ConsentOperations, GetTheClientBeforeAnythingElse) {
    script.onClient = [] { throw std::bad_alloc(); };
    EXPECT_THROW(getConsent(), std::bad_alloc);
    EXPECT_THROW(session.SetConsent({}), std::bad_alloc);
    EXPECT_THROW(getDocuments(), std::bad_alloc);
    EXPECT_EQ(script.endpoints.size(), 3U);
    EXPECT_EQ(script.endpoints[2], ORVEL_TEXT("OrvelAnalyticsRpcEndpoint"));
}

}  // namespace
