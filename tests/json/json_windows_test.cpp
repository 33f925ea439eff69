/// What the backend on the platform's own classes does beyond the common: all of it comes from the
/// platform, here from the stand-in for it.

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "json/json.h"
#include "orvel/analytics/hresult_error.h"

namespace {

using Orvel::WideString;
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

}  // namespace
