#include "text/numbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

using Orvel::WideString;
using Orvel::Analytics::Text::toInt32;
using Orvel::Analytics::Text::toInt64;

template <typename Error, typename Operation>
std::string raised(Operation operation) {
    try {
        operation();
    } catch (const Error& error) {
        EXPECT_EQ(typeid(error), typeid(Error));
        return error.what();
    }
    return "nothing";
}

std::string invalid32(const WideString& text) {
    return raised<std::invalid_argument>([&] { toInt32(text); });
}

std::string outOfRange32(const WideString& text) {
    return raised<std::out_of_range>([&] { toInt32(text); });
}

TEST(ToInt32, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(toInt32(ORVEL_TEXT("42")), 42);
    EXPECT_EQ(toInt32(ORVEL_TEXT("-7")), -7);
    EXPECT_EQ(toInt32(ORVEL_TEXT("+7")), 7);
    EXPECT_EQ(toInt32(ORVEL_TEXT("12.75")), 12);
    EXPECT_EQ(toInt32(ORVEL_TEXT("123abc")), 123);
    EXPECT_EQ(toInt32(ORVEL_TEXT("00000000032")), 32);
    EXPECT_EQ(toInt32(ORVEL_TEXT("-0")), 0);
}

TEST(ToInt32, SkipsTheWhiteSpaceOfTheCLocale) {
    EXPECT_EQ(toInt32(ORVEL_TEXT(" \t\n\v\f\r5")), 5);
    for (const Orvel::WideChar other : ORVEL_TEXT("\u0085\u00A0\u1680\u2003\u2028\u3000")) {
        EXPECT_EQ(invalid32(WideString(1, other) + ORVEL_TEXT("5")), "invalid stoi argument");
    }
}

TEST(ToInt32, KnowsAsciiDigitsOnly) {
    EXPECT_EQ(invalid32(ORVEL_TEXT("\u0661")), "invalid stoi argument");
    EXPECT_EQ(invalid32(ORVEL_TEXT("\uFF11")), "invalid stoi argument");
    EXPECT_EQ(toInt32(ORVEL_TEXT("1\u0661")), 1);
}

TEST(ToInt32, RaisesInvalidArgumentWithoutADigit) {
    for (const WideString& text :
         {WideString(), WideString(ORVEL_TEXT(" ")), WideString(ORVEL_TEXT("-")),
          WideString(ORVEL_TEXT("+-1")), WideString(ORVEL_TEXT("- 1")),
          WideString(ORVEL_TEXT("\"42\"")), WideString(ORVEL_TEXT("true")), WideString(1, 0)}) {
        EXPECT_EQ(invalid32(text), "invalid stoi argument") << testing::PrintToString(text);
    }
}

TEST(ToInt32, RaisesOutOfRangeBeyond32Bits) {
    EXPECT_EQ(toInt32(ORVEL_TEXT("2147483647")), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(toInt32(ORVEL_TEXT("-2147483648")), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(outOfRange32(ORVEL_TEXT("2147483648")), "stoi argument out of range");
    EXPECT_EQ(outOfRange32(ORVEL_TEXT("-2147483649")), "stoi argument out of range");
    EXPECT_EQ(outOfRange32(WideString(100'000, '9')), "stoi argument out of range");
}

TEST(ToInt64, HasTheRangeOf64BitsAndItsOwnMessages) {
    EXPECT_EQ(toInt64(ORVEL_TEXT("9223372036854775807")), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(toInt64(ORVEL_TEXT("-9223372036854775808")),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(raised<std::out_of_range>([] { toInt64(ORVEL_TEXT("9223372036854775808")); }),
              "stoll argument out of range");
    EXPECT_EQ(raised<std::out_of_range>([] { toInt64(ORVEL_TEXT("-9223372036854775809")); }),
              "stoll argument out of range");
    EXPECT_EQ(raised<std::invalid_argument>([] { toInt64(ORVEL_TEXT("x1")); }),
              "invalid stoll argument");
}

}  // namespace
