#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <utility>

#include "json/raise.h"
#include "orvel/analytics.h"
#include "support/consent_documents.h"
#include "support/raised_status.h"

namespace {

using nlohmann::json;
using Orvel::toUtf8;
using Orvel::toWide;
using Orvel::WideString;
using Orvel::TestSupport::consentDocument;
using Orvel::TestSupport::permissionsDocument;
using Orvel::TestSupport::privacyDocument;
using Orvel::TestSupport::raisedStatus;
using Value = ProcessingPermissions::ProcessingPermissionValue;
namespace Status = Orvel::Analytics::Json::Status;

WideString wide(const json& document) { return toWide(document.dump()); }

std::uint32_t consentStatus(const json& document) {
    return raisedStatus([&] { static_cast<void>(ConsentObject::FromJson(wide(document))); });
}

TEST(ProcessingPermissions, HaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(Value::Accepted), 0);
    EXPECT_EQ(static_cast<int>(Value::Rejected), 1);
    EXPECT_EQ(static_cast<int>(Value::Unknown), 2);
}

TEST(ProcessingPermissions, StartUnknownAndAreWrittenSo) {
    const ProcessingPermissions permissions;
    EXPECT_EQ(permissions.ToJson(), ORVEL_TEXT("{\"marketing\":\"Unknown\",\"support\":\"Unknown\","
                                               "\"product_enhancement\":\"Unknown\"}"));
}

TEST(ProcessingPermissions, WriteANumberOutsideTheEnumerationAsUnknown) {
    ProcessingPermissions permissions;
    permissions.marketing = static_cast<Value>(7);
    permissions.support = static_cast<Value>(-1);
    permissions.productEnhancement = Value::Rejected;
    EXPECT_EQ(json::parse(toUtf8(permissions.ToJson())),
              permissionsDocument("Unknown", "Unknown", "Rejected"));
}

TEST(ProcessingPermissions, ReadTheirThreeTexts) {
    ProcessingPermissions permissions;
    EXPECT_EQ(permissions.FromJson(wide(permissionsDocument("Accepted", "Rejected", "Unknown"))),
              &permissions);
    EXPECT_EQ(permissions.marketing, Value::Accepted);
    EXPECT_EQ(permissions.support, Value::Rejected);
    EXPECT_EQ(permissions.productEnhancement, Value::Unknown);
}

TEST(ProcessingPermissions, ReadEveryOtherTextAsUnknown) {
    for (const char* text : {"accepted", " Accepted", "ACCEPTED", "", "Accepted ", "maybe"}) {
        ProcessingPermissions permissions;
        permissions.marketing = Value::Rejected;
        permissions.FromJson(wide(permissionsDocument(text, "Accepted", "Rejected")));
        EXPECT_EQ(permissions.marketing, Value::Unknown) << text;
    }
}

TEST(ProcessingPermissions, ReadBackWhatTheyWrote) {
    for (const Value value : {Value::Accepted, Value::Rejected, Value::Unknown}) {
        ProcessingPermissions written;
        written.marketing = value;
        written.support = Value::Accepted;
        written.productEnhancement = value;
        ProcessingPermissions read;
        read.FromJson(written.ToJson());
        EXPECT_EQ(read.marketing, value);
        EXPECT_EQ(read.support, Value::Accepted);
        EXPECT_EQ(read.productEnhancement, value);
    }
}

TEST(ProcessingPermissions, RaiseForAMemberThatIsNoString) {
    json document = permissionsDocument("Accepted", "Accepted", "Accepted");
    document["marketing"] = true;
    ProcessingPermissions permissions;
    EXPECT_EQ(raisedStatus([&] { permissions.FromJson(wide(document)); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(permissions.marketing, Value::Unknown);
}

TEST(ProcessingPermissions, RaiseForATextThatIsNoObject) {
    ProcessingPermissions permissions;
    for (const char* text : {"", "[]", "\"Accepted\"", "{"}) {
        EXPECT_EQ(raisedStatus([&] { permissions.FromJson(toWide(text)); }),
                  Status::kInvalidJsonString);
    }
}

TEST(ProcessingPermissions, KeepWhatWasReadBeforeTheFailure) {
    json document = permissionsDocument("Accepted", "Accepted", "Accepted");
    document.erase("product_enhancement");
    ProcessingPermissions permissions;
    EXPECT_EQ(raisedStatus([&] { permissions.FromJson(wide(document)); }), Status::kValueNotFound);
    EXPECT_EQ(permissions.marketing, Value::Accepted);
    EXPECT_EQ(permissions.support, Value::Unknown);
    EXPECT_EQ(permissions.productEnhancement, Value::Unknown);

    document = permissionsDocument("Rejected", "Accepted", "Rejected");
    document.erase("support");
    EXPECT_EQ(raisedStatus([&] { permissions.FromJson(wide(document)); }), Status::kValueNotFound);
    EXPECT_EQ(permissions.marketing, Value::Rejected);
    EXPECT_EQ(permissions.support, Value::Unknown);
    EXPECT_EQ(permissions.productEnhancement, Value::Rejected);
}

TEST(PrivacyDocuments, FillTheirFieldsAndIgnoreFurtherMembers) {
    json document = privacyDocument();
    document["extra"] = 5;
    PrivacyDocuments documents;
    EXPECT_EQ(documents.FromJson(wide(document)), &documents);
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
    EXPECT_EQ(documents.telemetryUrl, ORVEL_TEXT("https://example.com/telemetry"));
}

TEST(PrivacyDocuments, StartEmptyAndAcceptEmptyStrings) {
    PrivacyDocuments documents;
    EXPECT_TRUE(documents.privacyUrl.empty() && documents.warrantyUrl.empty() &&
                documents.telemetryUrl.empty());
    documents.privacyUrl = ORVEL_TEXT("before");
    documents.FromJson(
        ORVEL_TEXT("{\"privacyurl\":\"\",\"warrantyurl\":\"\",\"telemetryurl\":\"\"}"));
    EXPECT_TRUE(documents.privacyUrl.empty());
}

TEST(PrivacyDocuments, TellTheCaseOfNamesApart) {
    json document = privacyDocument();
    document["privacyURL"] = document["privacyurl"];
    document.erase("privacyurl");
    PrivacyDocuments documents;
    EXPECT_EQ(raisedStatus([&] { documents.FromJson(wide(document)); }), Status::kValueNotFound);
}

TEST(PrivacyDocuments, KeepWhatWasReadBeforeTheFailure) {
    json document = privacyDocument();
    document.erase("warrantyurl");
    PrivacyDocuments documents;
    EXPECT_EQ(raisedStatus([&] { documents.FromJson(wide(document)); }), Status::kValueNotFound);
    EXPECT_EQ(documents.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_TRUE(documents.warrantyUrl.empty());
    EXPECT_TRUE(documents.telemetryUrl.empty());
    document["warrantyurl"] = nullptr;
    EXPECT_EQ(raisedStatus([&] { documents.FromJson(wide(document)); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { documents.FromJson(ORVEL_TEXT("[]")); }),
              Status::kInvalidJsonString);
}

TEST(ConsentObject, StartsEmptyWithNothingPermitted) {
    const ConsentObject consent;
    EXPECT_TRUE(consent.deviceSerialNumber.empty());
    EXPECT_FALSE(consent.processData);
    EXPECT_FALSE(consent.managed);
    EXPECT_EQ(consent.processingPermissions.support, Value::Unknown);
    EXPECT_TRUE(consent.privacyDocuments.privacyUrl.empty());
}

TEST(ConsentObject, ReadsAllNineFieldsAndIgnoresFurtherMembers) {
    json document = consentDocument();
    document["extra"] = {{"deep", 1}};
    document["processing_permissions"] = permissionsDocument("Accepted", "Rejected", "maybe");
    const ConsentObject consent = ConsentObject::FromJson(wide(document));
    EXPECT_EQ(consent.deviceSerialNumber, ORVEL_TEXT("SN-1"));
    EXPECT_EQ(consent.timestamp, ORVEL_TEXT(" 2026-01-31, in words "));
    EXPECT_EQ(consent.countryCode, ORVEL_TEXT("PT"));
    EXPECT_TRUE(consent.processData);
    EXPECT_FALSE(consent.managed);
    EXPECT_EQ(consent.tenant, ORVEL_TEXT("tenant \u6f22"));
    EXPECT_EQ(consent.consentSource, ORVEL_TEXT("setup"));
    EXPECT_EQ(consent.privacyDocuments.telemetryUrl, ORVEL_TEXT("https://example.com/telemetry"));
    EXPECT_EQ(consent.processingPermissions.marketing, Value::Accepted);
    EXPECT_EQ(consent.processingPermissions.support, Value::Rejected);
    EXPECT_EQ(consent.processingPermissions.productEnhancement, Value::Unknown);
}

TEST(ConsentObject, RaisesWithoutAnyOneOfItsMembers) {
    const json complete = consentDocument();
    for (const auto& [name, value] : complete.items()) {
        json document = consentDocument();
        document.erase(name);
        EXPECT_EQ(consentStatus(document), Status::kValueNotFound) << name;
    }
    EXPECT_EQ(consentStatus(json::object()), Status::kValueNotFound);
}

TEST(ConsentObject, RaisesForAMemberOfAnotherType) {
    const json complete = consentDocument();
    for (const auto& [name, value] : complete.items()) {
        json document = consentDocument();
        document[name] = value.is_boolean() ? json("true") : json(5);
        EXPECT_EQ(consentStatus(document), Status::kIllegalMethodCall) << name;
    }
}

TEST(ConsentObject, RaisesForATextThatIsNoObject) {
    for (const char* text : {"", "[]", "null", "{\"device_serial_number\":"}) {
        EXPECT_EQ(raisedStatus([&] { static_cast<void>(ConsentObject::FromJson(toWide(text))); }),
                  Status::kInvalidJsonString);
    }
}

TEST(ConsentObject, RaisesTheFaultsOfItsNestedRecords) {
    json document = consentDocument();
    document["processing_permissions"].erase("marketing");
    EXPECT_EQ(consentStatus(document), Status::kValueNotFound);
    document = consentDocument();
    document["privacy_documents"]["privacyurl"] = 5;
    EXPECT_EQ(consentStatus(document), Status::kIllegalMethodCall);
}

TEST(ConsentObject, ReportsTheFaultThatItsOrderOfReadingMeetsFirst) {
    // Of a missing member and one of another type, the status tells which was met.
    const auto metFirst = [](const char* missing, const char* mistyped) {
        json document = consentDocument();
        document.erase(missing);
        document[mistyped] = 5;
        return consentStatus(document) == Status::kValueNotFound;
    };
    const char* const order[] = {
        "device_serial_number", "timestamp",         "country_code",
        "process_data",         "managed",           "tenant",
        "consent_source",       "privacy_documents", "processing_permissions"};
    for (std::size_t earlier = 0; earlier + 1 < std::size(order); ++earlier) {
        EXPECT_TRUE(metFirst(order[earlier], order[earlier + 1])) << order[earlier];
        EXPECT_FALSE(metFirst(order[earlier + 1], order[earlier])) << order[earlier];
    }
}

TEST(ConsentObject, ReadsThePermissionsBeforeTheAddresses) {
    json document = consentDocument();
    document["processing_permissions"].erase("marketing");
    document["privacy_documents"]["privacyurl"] = 5;
    EXPECT_EQ(consentStatus(document), Status::kValueNotFound);
}

TEST(ConsentObject, SharesNothingWithItsCopies) {
    const ConsentObject source = ConsentObject::FromJson(wide(consentDocument()));
    ConsentObject copy = source;
    copy.tenant = ORVEL_TEXT("other");
    copy.privacyDocuments.privacyUrl.clear();
    copy.processingPermissions.marketing = Value::Rejected;
    EXPECT_EQ(source.tenant, ORVEL_TEXT("tenant \u6f22"));
    EXPECT_EQ(source.privacyDocuments.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_EQ(source.processingPermissions.marketing, Value::Accepted);
    const ConsentObject moved = std::move(copy);
    EXPECT_EQ(moved.tenant, ORVEL_TEXT("other"));
}

}  // namespace
