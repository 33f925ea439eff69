/// What becomes of a session when the JSON layer fails, operation by operation.

#include "support/json_fault.h"

#include <gtest/gtest.h>

#include <new>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/data_classes.h"
#include "support/session_access.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::hresult_access_denied;
using Orvel::Analytics::hresult_error;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Orvel::Analytics::Session::SessionAccess;
using Orvel::Analytics::Testing::ScriptedEndpoint;
using Orvel::TestSupport::field;
using Orvel::TestSupport::JsonFault;
using Orvel::TestSupport::JsonOperation;
using Orvel::TestSupport::TestDataClass;

constexpr std::uint32_t kOutOfMemory = 0x8007000E;

class FailingJson : public testing::TestWithParam<JsonOperation> {
  protected:
    JsonFault fault;
    ScriptedEndpoint script;
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")};
    TestDataClass evt{{field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(9)"))}};
};

using FailingValidation = FailingJson;
using FailingRecord = FailingJson;
using FailingRegistration = FailingJson;
using FailingBatch = FailingJson;

INSTANTIATE_TEST_SUITE_P(, FailingValidation,
                         testing::Values(JsonOperation::ObjectSize, JsonOperation::GetView,
                                         JsonOperation::HasKey, JsonOperation::Lookup,
                                         JsonOperation::Stringify));
INSTANTIATE_TEST_SUITE_P(, FailingRecord,
                         testing::Values(JsonOperation::NewObject, JsonOperation::StringValue,
                                         JsonOperation::SetNamedValue));
INSTANTIATE_TEST_SUITE_P(, FailingRegistration,
                         testing::Values(JsonOperation::NewObject, JsonOperation::NewArray,
                                         JsonOperation::StringValue, JsonOperation::SetNamedValue,
                                         JsonOperation::Append, JsonOperation::Stringify));
INSTANTIATE_TEST_SUITE_P(, FailingBatch,
                         testing::Values(JsonOperation::NewObject, JsonOperation::NewArray,
                                         JsonOperation::StringValue, JsonOperation::NumberValue,
                                         JsonOperation::SerialisedObject, JsonOperation::Append,
                                         JsonOperation::SetNamedValue, JsonOperation::Stringify));

TEST_P(FailingValidation, LeavesCollectEventAsTheError) {
    fault.failing = GetParam();
    EXPECT_THROW(session.CollectEvent(&evt, ORVEL_TEXT("{}")), hresult_error);
    EXPECT_TRUE(SessionAccess::eventQueue(session).empty());
}

TEST_P(FailingRecord, LeavesCollectEventAsTheErrorWithTheQueueUnchanged) {
    ASSERT_EQ(session.CollectEvent(&evt, ORVEL_TEXT("{}")), AnalyticsResult::Success);
    fault.failing = GetParam();
    fault.status = 0x80070005;
    EXPECT_THROW(session.CollectEvent(&evt, ORVEL_TEXT("{}")), hresult_access_denied);
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
}

TEST_P(FailingRecord, LeavesCollectEventAsTheStandardErrorWhenMemoryIsExhausted) {
    fault.failing = GetParam();
    fault.status = kOutOfMemory;
    EXPECT_THROW(session.CollectEvent(&evt, ORVEL_TEXT("{}")), std::bad_alloc);
    EXPECT_TRUE(SessionAccess::eventQueue(session).empty());
}

TEST_F(FailingJson, TheSecondSerialisationOfCollectEventLeavesTheQueueUnchanged) {
    fault.failing = JsonOperation::Stringify;
    fault.failingCall = 2;
    EXPECT_THROW(session.CollectEvent(&evt, ORVEL_TEXT("{}")), hresult_error);
    EXPECT_TRUE(SessionAccess::eventQueue(session).empty());
}

TEST_F(FailingJson, OnlyTheParseStepBecomesAResult) {
    fault.failing = JsonOperation::ParseObject;
    for (const std::uint32_t status : {0x83750007U, 0x80070005U, 0x80004005U}) {
        fault.status = status;
        EXPECT_EQ(session.CollectEvent(&evt, ORVEL_TEXT("{}")), AnalyticsResult::MalformedJson);
    }
    EXPECT_EQ(evt.timesAsked, 0);
}

TEST_F(FailingJson, ExhaustedMemoryIsNeverTurnedIntoAResult) {
    fault.status = kOutOfMemory;
    fault.failing = JsonOperation::ParseObject;
    EXPECT_THROW(session.CollectEvent(&evt, ORVEL_TEXT("{}")), std::bad_alloc);
    evt.fields.front().type = ORVEL_TEXT("integer");
    fault.failing = JsonOperation::Stringify;
    EXPECT_THROW(session.CollectEvent(&evt, ORVEL_TEXT("{}")), std::bad_alloc);
}

TEST_F(FailingJson, AnEventIsParsedOnce) {
    ASSERT_EQ(session.CollectEvent(&evt, ORVEL_TEXT("{}")), AnalyticsResult::Success);
    EXPECT_EQ(std::count(fault.calls.begin(), fault.calls.end(), JsonOperation::ParseObject), 1);
    session.SendEvents();
    EXPECT_EQ(std::count(fault.calls.begin(), fault.calls.end(), JsonOperation::ParseObject), 1);
}

TEST_F(FailingJson, AFieldWithoutAValueObjectIsJudgedByItsNullability) {
    fault.lookupYieldsNothing = true;
    const auto result = [&](const WideString& nullable, const WideString& type) {
        evt.fields = {field(ORVEL_TEXT("a"), type, nullable)};
        return static_cast<int>(session.CollectEvent(&evt, ORVEL_TEXT("{}")));
    };
    EXPECT_EQ(result(ORVEL_TEXT("false"), ORVEL_TEXT("text")), 31);
    EXPECT_EQ(result(ORVEL_TEXT("False"), ORVEL_TEXT("integer")), 31);
    for (const Orvel::WideStringView nullable :
         {ORVEL_TEXT("FALSE"), ORVEL_TEXT("false "), ORVEL_TEXT(""), ORVEL_TEXT("true")}) {
        EXPECT_EQ(result(WideString(nullable), ORVEL_TEXT("integer")), 0)
            << "no value is not held to its type";
        EXPECT_EQ(result(WideString(nullable), ORVEL_TEXT("varchar(99999999999)")), 0);
    }
}

TEST_P(FailingRegistration, LeavesRegisterDataClassAsTheErrorWithTheVersionTaken) {
    fault.failing = GetParam();
    EXPECT_THROW(session.RegisterDataClass(&evt), hresult_error);
    EXPECT_EQ(SessionAccess::appSession(session).versionTag, ORVEL_TEXT("1.0"));
    EXPECT_TRUE(script.endpoints.empty());
}

TEST_P(FailingBatch, LeavesSendEventsAsTheErrorWithQueueAndSessionKept) {
    ASSERT_EQ(session.CollectEvent(&evt, ORVEL_TEXT("{}")), AnalyticsResult::Success);
    const WideString before = SessionAccess::appSession(session).sessionId;
    fault.calls.clear();
    fault.failing = GetParam();
    EXPECT_THROW(session.SendEvents(), hresult_error);
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
    EXPECT_EQ(SessionAccess::appSession(session).sessionId, before);
    EXPECT_TRUE(script.executed.empty());
    EXPECT_EQ(script.endpoints.size(), 1U) << "the client comes first";
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(FailingJson, AnEmptyDocumentIsNotSentAndKeepsQueueAndSession) {
    ASSERT_EQ(session.CollectEvent(&evt, ORVEL_TEXT("{}")), AnalyticsResult::Success);
    const WideString before = SessionAccess::appSession(session).sessionId;
    fault.serialised.clear();
    EXPECT_EQ(static_cast<int>(session.SendEvents()), 15);
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
    EXPECT_EQ(SessionAccess::appSession(session).sessionId, before);
    EXPECT_TRUE(script.executed.empty());
}

TEST_F(FailingJson, AReplyThatCannotBeReadClosesTheConnection) {
    script.executions = {{0, ORVEL_TEXT("MyApp::ACK::")}, {0, ORVEL_TEXT("ErrorCode")}};
    for (const JsonOperation operation : {JsonOperation::ParseObject, JsonOperation::GetNamedArray,
                                          JsonOperation::ArraySize, JsonOperation::GetAt}) {
        script.executed.clear();
        script.closed = 0;
        fault.calls.clear();
        fault.failing = operation;
        EXPECT_THROW(session.RegisterDataClass(&evt), hresult_error);
        EXPECT_EQ(script.closed, 1);
        EXPECT_EQ(script.clientsAlive, 0);
    }
}

}  // namespace
