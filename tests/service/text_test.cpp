#include "service/text.h"

#include <gtest/gtest.h>

#include "wide.h"

namespace Orvel::Service {
namespace {

using namespace std::string_literals;

TEST(TextTest, ConvertsEveryLengthOfUtf8) {
    EXPECT_EQ(toUtf8(u"a\u00E9\u4E2D\U0001F600"), "a\u00E9\u4E2D\U0001F600");
    EXPECT_EQ(toUtf8(u"\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"),
              "\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF");
}

TEST(TextTest, KeepsNulCharacters) { EXPECT_EQ(toUtf8(u"a\0b"s), "a\0b"s); }

TEST(TextTest, RefusesUnpairedSurrogates) {
    EXPECT_EQ(toUtf8(WideString{u'a', 0xD800}), std::nullopt);
    EXPECT_EQ(toUtf8(WideString{0xD800, u'a'}), std::nullopt);
    EXPECT_EQ(toUtf8(WideString{0xD800, 0xD800, 0xDC00}), std::nullopt);
    EXPECT_EQ(toUtf8(WideString{0xDC00, 0xD800}), std::nullopt);
}

TEST(TextTest, HelperOfTheseTestsIsTheInverse) {
    const std::string text = "a\u00E9\u4E2D\U0001F600\0z"s;
    EXPECT_EQ(toUtf8(wide(text)), text);
}

}  // namespace
}  // namespace Orvel::Service
