/// What differs where the platform's own classes build and parse the documents: numbers are
/// doubles, and the platform's limits are the library's.

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "json/json.h"
#include "json/raise.h"
#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/data_classes.h"
#include "support/raised_status.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Orvel::Analytics::Testing::ScriptedEndpoint;
using Orvel::TestSupport::field;
using Orvel::TestSupport::raisedStatus;
using Orvel::TestSupport::TestDataClass;
using namespace Orvel::Analytics::Json;

TEST(WindowsJson, ReadsEveryNumberAsADouble) {
    Document document;
    EXPECT_EQ(document
                  .parseObject(ORVEL_TEXT("{\"a\":1.50,\"b\":1e10,\"c\":12345678901234567890123,"
                                          "\"d\":1E+2,\"e\":0.1}"))
                  .stringify(),
              ORVEL_TEXT("{\"a\":1.5,\"b\":10000000000,\"c\":1.2345678901234568e+22,\"d\":100,"
                         "\"e\":0.1}"));
}

TEST(WindowsJson, KeepsOfANumberWhatADoubleHolds) {
    const auto kept = [](const std::string& number) {
        Document document;
        const Object object = document.parseObject(Orvel::toWide("{\"a\":" + number + "}"));
        return Orvel::toUtf8(object.getView().lookup(ORVEL_TEXT("a"))->stringify());
    };
    EXPECT_EQ(kept("9007199254740992"), "9007199254740992");
    EXPECT_EQ(kept("9007199254740993"), "9007199254740992");
    EXPECT_EQ(std::stod(kept("12345678901234567890")), 12345678901234567890.0);
    EXPECT_EQ(std::stod(kept("3.0000000000000009")), 3.0000000000000009);
}

TEST(WindowsJson, KeepsTheOrderOfMembers) {
    const WideString text = ORVEL_TEXT("{\"z\":1,\"a\":2,\"m\":{\"y\":1,\"b\":2}}");
    Document document;
    EXPECT_EQ(document.parseObject(text).stringify(), text);
}

TEST(WindowsJson, KeepsUnpairedSurrogatesOfAStringValue) {
    const WideString text =
        WideString(1, 0xD800) + ORVEL_TEXT("a") + WideString(2, 0xDFFF) + WideString(1, 0xD83D);
    Document document;
    Object object = document.newObject();
    object.setNamedValue(text, document.stringValue(text));
    EXPECT_EQ(object.getNamedString(text), text);
    EXPECT_EQ(object.stringify(),
              ORVEL_TEXT("{\"") + text + ORVEL_TEXT("\":\"") + text + ORVEL_TEXT("\"}"));
}

TEST(WindowsJson, RefusesToWriteWhatIsNoFiniteNumber) {
    Document document;
    for (const double number :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_THROW(static_cast<void>(document.numberValue(number)),
                     Orvel::Analytics::hresult_invalid_argument);
    }
}

TEST(WindowsJson, HoldsTheLimitOfNestingForWhatTheLibrarySerialised) {
    WideString deep = ORVEL_TEXT("{\"a\":");
    deep.append(1024, '[').append(1024, ']').append(1, '}');
    Document document;
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.serialisedObject(deep)); }),
              Status::kImplementationLimit);
}

TEST(WindowsJson, ReadsWhatWasSerialisedEarlierOnceMore) {
    const WideString number = ORVEL_TEXT("{\"a\":1.0}");
    const WideString half = ORVEL_TEXT("{\"a\":");
    Document document;
    EXPECT_EQ(document.serialisedObject(number).stringify(), ORVEL_TEXT("{\"a\":1}"));
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.serialisedObject(half)); }),
              Status::kInvalidJsonString);
}

class WindowsEvent : public testing::Test {
  protected:
    AnalyticsResult collect(const WideString& type, const WideString& value) {
        dataClass.fields = {field(ORVEL_TEXT("a"), type)};
        return session.CollectEvent(&dataClass, ORVEL_TEXT("{\"a\":") + value + ORVEL_TEXT("}"));
    }

    ScriptedEndpoint script;
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")};
    TestDataClass dataClass{{}};
};

TEST_F(WindowsEvent, AnIntegerWithAnExponentIsTheWholeNumber) {
    EXPECT_EQ(collect(ORVEL_TEXT("integer"), ORVEL_TEXT("1e10")), AnalyticsResult::GenericError);
    EXPECT_EQ(collect(ORVEL_TEXT("integer"), ORVEL_TEXT("1e9")), AnalyticsResult::Success);
}

TEST_F(WindowsEvent, ANumberIsMeasuredAsItIsWrittenAgain) {
    EXPECT_EQ(collect(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("1.50")), AnalyticsResult::Success);
    EXPECT_EQ(collect(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("1.525")),
              AnalyticsResult::FieldValueTooLong);
}

TEST_F(WindowsEvent, WhoseRecordNestsTooDeepIsRaisedWhenItIsSent) {
    WideString deep(1023, '[');
    deep.append(1023, ']');
    ASSERT_EQ(collect(ORVEL_TEXT("text"), deep), AnalyticsResult::Success);
    EXPECT_EQ(raisedStatus([&] { session.SendEvents(); }), Status::kImplementationLimit);
    EXPECT_TRUE(script.executed.empty());
}

TEST_F(WindowsEvent, OfTheDeepestNestingThatFitsIsSent) {
    WideString deep(1022, '[');
    deep.append(1022, ']');
    ASSERT_EQ(collect(ORVEL_TEXT("text"), deep), AnalyticsResult::Success);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
    EXPECT_NE(script.executed.back().command.find(deep), WideString::npos);
}

TEST_F(WindowsEvent, ThatNestsTooDeepIsMalformed) {
    WideString deep(1024, '[');
    deep.append(1024, ']');
    EXPECT_EQ(collect(ORVEL_TEXT("text"), deep), AnalyticsResult::MalformedJson);
}

}  // namespace
