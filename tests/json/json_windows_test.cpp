/// What the backend on the platform's classes does in its own way: every value is the platform's,
/// whose numbers are doubles.

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "json/json.h"
#include "json/raise.h"
#include "orvel/analytics/hresult_error.h"
#include "support/raised_status.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::TestSupport::raisedStatus;
using namespace Orvel::Analytics::Json;

WideString reserialised(WideStringView text) {
    Document document;
    return document.parseObject(text).stringify();
}

/// Objects within objects, as the platform counts them.
WideString nested(int depth) {
    WideString text = ORVEL_TEXT("{}");
    for (int around = 1; around < depth; ++around) {
        text = ORVEL_TEXT("{\"a\":") + text + ORVEL_TEXT("}");
    }
    return text;
}

/// More than the platform's documented limit, 1,024. The status of its refusal is not documented.
constexpr int kTooDeep = 1025;

TEST(WindowsJson, WritesANumberAnewAndNotAsItWasWritten) {
    EXPECT_EQ(reserialised(ORVEL_TEXT("{\"a\":1.0,\"b\":1e10,\"c\":1E+2}")),
              ORVEL_TEXT("{\"a\":1,\"b\":10000000000,\"c\":100}"));
    EXPECT_EQ(reserialised(ORVEL_TEXT("{\"a\":1.50}")), ORVEL_TEXT("{\"a\":1.5}"));
}

TEST(WindowsJson, KeepsOfANumberWhatADoubleHolds) {
    const auto kept = [](const std::string& number) {
        Document document;
        const Object object = document.parseObject(Orvel::toWide("{\"a\":" + number + "}"));
        return Orvel::toUtf8(object.getView().lookup(ORVEL_TEXT("a"))->stringify());
    };
    EXPECT_EQ(kept("9007199254740992"), "9007199254740992");
    EXPECT_EQ(kept("9007199254740993"), "9007199254740992");
    EXPECT_NE(kept("12345678901234567890"), "12345678901234567890");
    EXPECT_EQ(std::stod(kept("12345678901234567890")), 12345678901234567890.0);
    EXPECT_EQ(std::stod(kept("3.0000000000000009")), 3.0000000000000009);
}

TEST(WindowsJson, KeepsTheOrderOfMembers) {
    const WideString text = ORVEL_TEXT("{\"z\":1,\"a\":2,\"m\":{\"y\":1,\"b\":2}}");
    EXPECT_EQ(reserialised(text), text);
}

TEST(WindowsJson, HoldsUnpairedSurrogatesOfAStringValue) {
    const WideString text =
        WideString(1, 0xD800) + ORVEL_TEXT("a") + WideString(2, 0xDFFF) + WideString(1, 0xD83D);
    Document document;
    Object object = document.newObject();
    object.setNamedValue(ORVEL_TEXT("s"), document.stringValue(text));
    EXPECT_EQ(object.getNamedString(ORVEL_TEXT("s")), text);
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

TEST(WindowsJson, RefusesNestingBeyondThePlatformsLimit) {
    const WideString deep = nested(1000);
    const WideString tooDeep = nested(kTooDeep);
    Document document;
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.parseObject(deep)); }), 0U);
    EXPECT_NE(raisedStatus([&] { static_cast<void>(document.parseObject(tooDeep)); }), 0U);
}

TEST(WindowsJson, ReadsWhatWasSerialisedEarlierOnceMore) {
    const WideString number = ORVEL_TEXT("{\"a\":1.0}");
    const WideString tooDeep = nested(kTooDeep);
    const WideString half = ORVEL_TEXT("{\"a\":");
    Document document;
    EXPECT_EQ(document.serialisedObject(number).stringify(), ORVEL_TEXT("{\"a\":1}"));
    EXPECT_NE(raisedStatus([&] { static_cast<void>(document.serialisedObject(tooDeep)); }), 0U);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.serialisedObject(half)); }),
              Status::kInvalidJsonString);
}

}  // namespace
