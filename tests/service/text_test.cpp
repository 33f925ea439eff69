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

TEST(TextTest, ConvertsEveryCharacterWhereverItStands) {
    constexpr std::size_t kLength = 300;
    for (std::size_t before = 0; before < kLength; ++before) {
        const std::string ascii(before, 'a');
        const WideString wideAscii(before, u'a');
        const std::string after(kLength - before, 'z');
        const WideString wideAfter(kLength - before, u'z');
        EXPECT_EQ(toUtf8(wideAscii + u"\u0080\u4E2D\U0001F600" + wideAfter),
                  ascii + "\u0080\u4E2D\U0001F600" + after);
        EXPECT_EQ(toUtf8(wideAscii + WideString{0xD800} + wideAfter), std::nullopt);
        EXPECT_EQ(toUtf8(wideAscii + WideString{0xDC00} + wideAfter), std::nullopt);
        EXPECT_EQ(toUtf8(wideAscii + WideString{0xD800}), std::nullopt);
    }
}

TEST(TextTest, ConvertsLongTextsOfEveryWidth) {
    for (const std::string character : {"a", "\u07FF", "\uFFFF", "\U0010FFFF"}) {
        std::string text;
        for (int i = 0; i < 1000; ++i) {
            text += character;
        }
        EXPECT_EQ(toUtf8(wide(text)), text);
    }
}

TEST(TextTest, KeepsNulCharacters) { EXPECT_EQ(toUtf8(u"a\0b"s), "a\0b"s); }

TEST(TextTest, RefusesUnpairedSurrogates) {
    EXPECT_EQ(toUtf8(WideString{u'a', 0xD800}), std::nullopt);
    EXPECT_EQ(toUtf8(WideString{0xD800, u'a'}), std::nullopt);
    EXPECT_EQ(toUtf8(WideString{0xD800, 0xD800, 0xDC00}), std::nullopt);
    EXPECT_EQ(toUtf8(WideString{0xDC00, 0xD800}), std::nullopt);
}

TEST(TextTest, ConvertsEveryLengthOfUtf8Back) {
    const std::string text = "\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF\0a"s;
    EXPECT_EQ(toUtf16(text), wide(text));
    EXPECT_EQ(toUtf16(""), u"");
}

TEST(TextTest, RefusesIllFormedUtf8) {
    for (const char* text : {"\x80", "\xC1\xBF", "\xC3", "\xC3z", "\xE0\x9F\xBF", "\xED\xA0\x80",
                             "\xED\xBF\xBF", "\xE4\xB8", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
                             "\xF0\x9F\x98", "\xF5\x80\x80\x80", "\xFF", "a\xBF"}) {
        EXPECT_EQ(toUtf16(text), std::nullopt) << text;
    }
}

TEST(TextTest, HelperOfTheseTestsIsTheInverse) {
    const std::string text = "a\u00E9\u4E2D\U0001F600\0z"s;
    EXPECT_EQ(toUtf8(wide(text)), text);
}

}  // namespace
}  // namespace Orvel::Service
