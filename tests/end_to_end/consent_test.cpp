/// The user's consent between the library and the real service.

#include <gtest/gtest.h>

#include "orvel/analytics.h"
#include "support/service_process.h"

namespace {

using Orvel::Analytics::hresult_error;
using Orvel::Support::ServiceProcess;
using Permission = ProcessingPermissions::ProcessingPermissionValue;

constexpr const char* kSettings = R"(
device_serial_number = "SN-1"
country_code = "PT"
tenant = "tenant 漢"
consent_source = "setup"
[privacy_documents]
privacyurl = "https://example.com/privacy"
warrantyurl = "https://example.com/warranty"
telemetryurl = "https://example.com/telemetry"
)";

class ConsentWithService : public testing::Test {
  protected:
    void start(const std::string& settings = kSettings) {
        service.useSettings(settings);
        service.start();
        service.useEndpoint();
    }

    ProcessingPermissions permissionsOf(AnalyticsSession& reader) {
        ConsentObject consent;
        EXPECT_EQ(static_cast<int>(reader.GetConsent(&consent)), 0);
        return consent.processingPermissions;
    }

    ServiceProcess service{ORVEL_SERVICE_PROGRAM};
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")};
    AnalyticsSession other{ORVEL_TEXT("Other"), ORVEL_TEXT("2")};
};

TEST_F(ConsentWithService, FillsARecordFromTheServicesSettings) {
    start();
    ConsentObject consent;
    consent.managed = true;
    ASSERT_EQ(static_cast<int>(session.GetConsent(&consent)), 0);
    EXPECT_EQ(consent.deviceSerialNumber, ORVEL_TEXT("SN-1"));
    EXPECT_EQ(consent.countryCode, ORVEL_TEXT("PT"));
    EXPECT_EQ(consent.tenant, ORVEL_TEXT("tenant \u6f22"));
    EXPECT_EQ(consent.consentSource, ORVEL_TEXT("setup"));
    EXPECT_TRUE(consent.processData);
    EXPECT_FALSE(consent.managed);
    EXPECT_EQ(consent.privacyDocuments.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(consent.processingPermissions.marketing, Permission::Unknown);
}

TEST_F(ConsentWithService, ReadsTheAddressesOfTheDocuments) {
    start();
    PrivacyDocuments documents;
    ASSERT_EQ(static_cast<int>(session.GetDocumentURLs(&documents)), 0);
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(documents.telemetryUrl, ORVEL_TEXT("https://example.com/telemetry"));
}

TEST_F(ConsentWithService, ShowsOneSessionWhatAnotherHasSet) {
    start();
    ProcessingPermissions permissions;
    permissions.marketing = Permission::Rejected;
    permissions.productEnhancement = Permission::Accepted;
    ASSERT_EQ(static_cast<int>(session.SetConsent(permissions)), 0);
    const ProcessingPermissions read = permissionsOf(other);
    EXPECT_EQ(read.marketing, Permission::Rejected);
    EXPECT_EQ(read.support, Permission::Unknown);
    EXPECT_EQ(read.productEnhancement, Permission::Accepted);
}

TEST_F(ConsentWithService, KeepsAChangeWhenTheServiceIsKilled) {
    start();
    ProcessingPermissions permissions;
    permissions.support = Permission::Accepted;
    ASSERT_EQ(static_cast<int>(session.SetConsent(permissions)), 0);
    service.kill();
    ConsentObject untouched;
    untouched.tenant = ORVEL_TEXT("before");
    EXPECT_EQ(static_cast<int>(session.GetConsent(&untouched)), 1);
    EXPECT_EQ(untouched.tenant, ORVEL_TEXT("before"));
    PrivacyDocuments documents;
    EXPECT_THROW(session.GetDocumentURLs(&documents), hresult_error);
    service.start();
    EXPECT_EQ(permissionsOf(session).support, Permission::Accepted);
}

TEST_F(ConsentWithService, CannotChangeAManagedDevice) {
    start("managed = true\n");
    ProcessingPermissions permissions;
    permissions.support = Permission::Accepted;
    EXPECT_EQ(static_cast<int>(session.SetConsent(permissions)), 19);
    EXPECT_EQ(permissionsOf(session).support, Permission::Unknown);
    ConsentObject consent;
    ASSERT_EQ(static_cast<int>(session.GetConsent(&consent)), 0);
    EXPECT_TRUE(consent.managed);
}

TEST_F(ConsentWithService, ReportsNothingWhereDataMustNotBeProcessed) {
    start("process_data = false\n");
    EXPECT_EQ(static_cast<int>(session.SendEvents()), 18);
    ConsentObject consent;
    ASSERT_EQ(static_cast<int>(session.GetConsent(&consent)), 0);
    EXPECT_FALSE(consent.processData);
    EXPECT_EQ(service.run({"events", "--count"}).out, "0\n");
}

}  // namespace
