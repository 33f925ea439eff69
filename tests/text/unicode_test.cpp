#include "text/unicode.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Orvel::toUtf8;
using Orvel::toWide;
using Orvel::WideString;
namespace Text = Orvel::Analytics::Text;

template <typename Operation>
std::string refusal(Operation operation) {
    try {
        operation();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

TEST(ToWide, ConvertsEveryLengthOfSequence) {
    EXPECT_EQ(toWide(""), ORVEL_TEXT(""));
    EXPECT_EQ(toWide("a\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF"),
              ORVEL_TEXT("a\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF"));
    EXPECT_EQ(toWide(std::string_view("\0a", 2)), WideString(1, 0) + ORVEL_TEXT("a"));
}

TEST(ToWide, ConvertsTextsLongerThanItsBuffer) {
    std::string utf8;
    WideString wide;
    for (int i = 0; i < 3000; ++i) {
        utf8 += i % 7 == 0 ? "\U0001F600" : "x";
        wide += i % 7 == 0 ? ORVEL_TEXT("\U0001F600") : ORVEL_TEXT("x");
    }
    EXPECT_EQ(toWide(utf8), wide);
    EXPECT_EQ(toUtf8(wide), utf8);
    EXPECT_EQ(toWide(std::string(5000, 'y')), WideString(5000, 'y'));
}

TEST(ToWide, NamesTheByteWhereTheTextIsIllFormed) {
    for (const std::string bad :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x9F\xBF", "\xE1\x80",
          "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x90\x80", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xFF"}) {
        EXPECT_EQ(refusal([&] { static_cast<void>(toWide("0123456789" + bad)); }),
                  "ill-formed UTF-8 at byte 10")
            << testing::PrintToString(bad);
    }
    EXPECT_EQ(refusal([] { static_cast<void>(toWide("\u00e9\xFFx")); }),
              "ill-formed UTF-8 at byte 2");
}

TEST(ToUtf8, NamesTheUnitOfAnUnpairedSurrogate) {
    const WideString high(1, 0xD800);
    const WideString low(1, 0xDC00);
    const auto refused = [](const WideString& wide) {
        return refusal([&] { static_cast<void>(toUtf8(wide)); });
    };
    EXPECT_EQ(refused(ORVEL_TEXT("ab") + high), "unpaired surrogate at code unit 2");
    EXPECT_EQ(refused(high + ORVEL_TEXT("ab")), "unpaired surrogate at code unit 0");
    EXPECT_EQ(refused(ORVEL_TEXT("\U0001F600") + low), "unpaired surrogate at code unit 2");
    EXPECT_EQ(refused(high + high + low), "unpaired surrogate at code unit 0");
    EXPECT_EQ(refused(low + high), "unpaired surrogate at code unit 0");
}

TEST(GeneralisedUtf8, KeepsEveryCodeUnit) {
    WideString every;
    for (char32_t unit = 0; unit < 0x10000; unit += 0xFF) {
        every += static_cast<Orvel::WideChar>(unit);
    }
    every += WideString(1, 0xDC00) + WideString(2, 0xD800) + WideString(1, 0xDFFF);
    std::string utf8(Text::utf8Length(every), '?');
    EXPECT_EQ(Text::writeUtf8(every, utf8.data()), utf8.data() + utf8.size());
    WideString again = ORVEL_TEXT("before");
    Text::appendUtf8(again, utf8);
    EXPECT_EQ(again, ORVEL_TEXT("before") + every);
}

/// ASCII of every length up to a few blocks, with something else at every place of it.
std::vector<WideString> textsWith(const WideString& other) {
    std::vector<WideString> texts;
    for (std::size_t length = 0; length < 70; ++length) {
        for (std::size_t at = 0; at <= length; ++at) {
            texts.push_back(WideString(at, 'a') + other + WideString(length - at, 'b'));
        }
    }
    return texts;
}

std::string generalisedUtf8(const WideString& wide) {
    std::string utf8(3 * wide.size(), '?');
    utf8.resize(static_cast<std::size_t>(Text::writeUtf8(wide, utf8.data()) - utf8.data()));
    return utf8;
}

TEST(GeneralisedUtf8, KeepsWhateverStandsAnywhereInARunOfAscii) {
    for (const WideString& other :
         {WideString(), WideString(ORVEL_TEXT("\u00e9")), WideString(ORVEL_TEXT("\u6f22\u5b57")),
          WideString(ORVEL_TEXT("\U0001F600")), WideString(1, 0xD800), WideString(1, 0xDC00)}) {
        for (const WideString& text : textsWith(other)) {
            const std::string utf8 = generalisedUtf8(text);
            ASSERT_EQ(utf8.size(), Text::utf8Length(text));
            ASSERT_EQ(Text::wideLength(utf8), text.size());
            WideString again;
            Text::appendUtf8(again, utf8);
            ASSERT_EQ(again, text);
        }
    }
}

TEST(FindUnpairedSurrogate, FindsItAnywhereInARunOfAscii) {
    for (const WideString& text : textsWith(WideString(1, 0xDABC))) {
        ASSERT_EQ(Text::findUnpairedSurrogate(text), text.find(Orvel::WideChar{0xDABC}));
    }
    for (const WideString& text : textsWith(ORVEL_TEXT("\U0001F600"))) {
        ASSERT_EQ(Text::findUnpairedSurrogate(text), WideString::npos);
    }
}

TEST(IsSameText, ComparesEveryCodeUnit) {
    const std::vector<WideString> texts = {ORVEL_TEXT(""),        ORVEL_TEXT("a"),
                                           ORVEL_TEXT("ab"),      ORVEL_TEXT("abc"),
                                           ORVEL_TEXT("\u00e9"),  ORVEL_TEXT("a\u00e9"),
                                           ORVEL_TEXT("a\u00c3"), ORVEL_TEXT("\u00c3\u00a9"),
                                           ORVEL_TEXT("\u6f22"),  ORVEL_TEXT("\U0001F600"),
                                           WideString(1, 0xD83D), WideString(1, 0xDE00)};
    for (const WideString& one : texts) {
        for (const WideString& other : texts) {
            EXPECT_EQ(Text::isSameText(generalisedUtf8(one), other), one == other);
        }
    }
}

TEST(FindIllFormedUtf8, AcceptsWhatIsWellFormed) {
    EXPECT_EQ(Text::findIllFormedUtf8("\u00e9\u6f22\U0001F600 and much more ASCII text"),
              std::string_view::npos);
}

}  // namespace
