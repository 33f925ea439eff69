/// The consent records and operations when the JSON layer fails.

#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/json_fault.h"

namespace {

using Orvel::Analytics::hresult_error;
using Orvel::Analytics::Testing::ScriptedEndpoint;
using Orvel::TestSupport::JsonFault;
using Orvel::TestSupport::JsonOperation;

TEST(ConsentObjectFault, LeavesFromJsonAsTheErrorAtEveryStep) {
    for (const JsonOperation operation :
         {JsonOperation::ParseObject, JsonOperation::GetNamedString, JsonOperation::GetNamedBoolean,
          JsonOperation::GetNamedObject, JsonOperation::Stringify}) {
        JsonFault fault;
        fault.failing = operation;
        EXPECT_THROW(static_cast<void>(ConsentObject::FromJson(ORVEL_TEXT("{}"))), hresult_error);
        fault.status = 0x8007000E;
        EXPECT_THROW(static_cast<void>(ConsentObject::FromJson(ORVEL_TEXT("{}"))), std::bad_alloc);
    }
}

TEST(ConsentObjectFault, ReadsTheAddressesObjectASecondTime) {
    JsonFault fault;
    static_cast<void>(ConsentObject::FromJson(ORVEL_TEXT("{}")));
    const std::vector<JsonOperation> expected = {
        JsonOperation::ParseObject,     JsonOperation::GetNamedString,
        JsonOperation::GetNamedString,  JsonOperation::GetNamedString,
        JsonOperation::GetNamedBoolean, JsonOperation::GetNamedBoolean,
        JsonOperation::GetNamedString,  JsonOperation::GetNamedString,
        JsonOperation::GetNamedObject,  JsonOperation::GetNamedObject,
        JsonOperation::Stringify,       JsonOperation::ParseObject,
        JsonOperation::GetNamedString,  JsonOperation::GetNamedString,
        JsonOperation::GetNamedString,  JsonOperation::GetNamedObject,
        JsonOperation::Stringify,       JsonOperation::ParseObject,
        JsonOperation::GetNamedString,  JsonOperation::GetNamedString,
        JsonOperation::GetNamedString};
    EXPECT_EQ(fault.calls, expected);
}

TEST(SetConsentFault, LeavesWithTheClientReleasedAndNothingSent) {
    for (const JsonOperation operation : {JsonOperation::NewObject, JsonOperation::StringValue,
                                          JsonOperation::SetNamedValue, JsonOperation::Stringify}) {
        JsonFault fault;
        ScriptedEndpoint script;
        AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
        fault.failing = operation;
        EXPECT_THROW(session.SetConsent({}), hresult_error);
        EXPECT_EQ(script.endpoints.size(), 1U) << "the client comes before the document";
        EXPECT_TRUE(script.executed.empty());
        EXPECT_EQ(script.clientsAlive, 0);
    }
}

}  // namespace
