/// The library's records and texts as values of the application.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <list>
#include <string>
#include <utility>

#include "orvel/analytics.h"
#include "support/consent_documents.h"
#include "support/data_classes.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::DataClass::DataClassFieldInfo;
using Analytics::Session::AppSession;
using PermissionValue = ProcessingPermissions::ProcessingPermissionValue;

const WideString kLong = ORVEL_TEXT("longer than what a string holds without memory of its own");

TEST(LibraryValues, TextsOfAnyLengthAreConverted) {
    for (const std::size_t length : {0U, 1U, 7U, 8U, 100'000U}) {
        const std::string narrow(length, 'x');
        EXPECT_EQ(toWide(narrow), WideString(length, 'x'));
        EXPECT_EQ(toUtf8(WideString(length, 'x')), narrow);
    }
    EXPECT_EQ(toWide("漢\U0001F600"), ORVEL_TEXT("漢\U0001F600"));
}

TEST(LibraryValues, AFieldIsCopiedAndMoved) {
    DataClassFieldInfo original = field(kLong, ORVEL_TEXT("integer"), ORVEL_TEXT("false"));
    original.auxValue = 7;
    DataClassFieldInfo copy(original);
    DataClassFieldInfo moved(std::move(original));
    DataClassFieldInfo assigned;
    assigned = copy;
    DataClassFieldInfo moveAssigned;
    moveAssigned = std::move(copy);
    for (const DataClassFieldInfo& each : {moved, assigned, moveAssigned}) {
        EXPECT_EQ(each.id, kLong);
        EXPECT_EQ(each.nullable, ORVEL_TEXT("false"));
        EXPECT_EQ(each.auxValue, 7);
    }
    // NOLINTBEGIN(bugprone-use-after-move): it is promised that they are empty then.
    EXPECT_TRUE(original.id.empty());
    EXPECT_TRUE(copy.id.empty());
    // NOLINTEND(bugprone-use-after-move)
}

TEST(LibraryValues, ADataClassIsCopiedAndMoved) {
    TestDataClass original({field(kLong, ORVEL_TEXT("integer"))}, kLong);
    EXPECT_GT(original.dateTime, 1'700'000'000) << "the current time";
    TestDataClass copy(original);
    TestDataClass moved(std::move(original));
    for (TestDataClass* const each : {&copy, &moved}) {
        EXPECT_EQ(each->id, kLong);
        EXPECT_EQ(each->getFields().front().id, kLong);
    }
}

TEST(LibraryValues, AnIdentityIsCopiedAndMoved) {
    AppSession original;
    EXPECT_EQ(original.sessionCounter, 0);
    original.appName = kLong;
    original.startTime = 5;
    AppSession copy(original);
    AppSession moved(std::move(original));
    EXPECT_EQ(copy.appName, kLong);
    EXPECT_EQ(moved.appName, kLong);
    EXPECT_EQ(moved.startTime, 5);
    EXPECT_TRUE(original.appName.empty());  // NOLINT(bugprone-use-after-move): as promised.
}

TEST(LibraryValues, AConsentRecordIsReadFromItsDocument) {
    const ConsentObject consent = ConsentObject::FromJson(toWide(consentDocument().dump()));
    const ConsentObject copy = consent;
    EXPECT_EQ(copy.timestamp, ORVEL_TEXT(" 2026-01-31, in words "));
    EXPECT_EQ(copy.privacyDocuments.privacyUrl, ORVEL_TEXT("https://example.com/privacy"));
    EXPECT_EQ(copy.processingPermissions.marketing, PermissionValue::Accepted);
}

TEST(LibraryValues, PermissionsAreWrittenAndRead) {
    ProcessingPermissions permissions;
    permissions.support = PermissionValue::Accepted;
    const WideString document = permissions.ToJson();
    EXPECT_EQ(nlohmann::json::parse(toUtf8(document)),
              permissionsDocument("Unknown", "Accepted", "Unknown"));
    ProcessingPermissions read;
    EXPECT_EQ(read.FromJson(document), &read);
    EXPECT_EQ(read.support, PermissionValue::Accepted);
}

TEST(LibraryValues, AddressesAreRead) {
    PrivacyDocuments documents;
    EXPECT_EQ(documents.FromJson(toWide(privacyDocument().dump())), &documents);
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT("https://example.com/warranty"));
}

}  // namespace
}  // namespace Orvel::TestSupport
