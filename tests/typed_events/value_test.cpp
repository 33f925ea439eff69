#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include "orvel/analytics/typed_event.h"
#include "orvel/analytics/typed_value.h"

namespace Orvel::Analytics::TypedEvents {
namespace {

using testing::HasSubstr;

static_assert(std::is_convertible_v<std::int32_t, Integer>);
static_assert(std::is_convertible_v<std::uint16_t, Integer>);
static_assert(std::is_convertible_v<signed char, Integer>);
static_assert(!std::is_convertible_v<std::uint32_t, Integer>);
static_assert(!std::is_convertible_v<std::int64_t, Integer>);
static_assert(!std::is_convertible_v<double, Integer>);
static_assert(!std::is_convertible_v<bool, Integer>);
static_assert(!std::is_convertible_v<char, Integer>);
static_assert(!std::is_convertible_v<const char*, Integer>);

static_assert(std::is_convertible_v<std::string, Text<5>>);
static_assert(std::is_convertible_v<std::string_view, Text<5>>);
static_assert(std::is_convertible_v<const char*, Text<5>>);
static_assert(std::is_convertible_v<WideString, Text<5>>);
static_assert(std::is_convertible_v<WideStringView, Text<5>>);
static_assert(!std::is_convertible_v<int, Text<5>>);
static_assert(!std::is_convertible_v<std::nullptr_t, Text<5>>);

// A value that must be there is not there by default.
static_assert(!std::is_default_constructible_v<Text<5>>);
static_assert(!std::is_default_constructible_v<Integer>);
static_assert(!std::is_default_constructible_v<Value>);

static_assert(!std::is_convertible_v<std::nullptr_t, Value>);
static_assert(!std::is_convertible_v<const void*, Value>);
static_assert(!std::is_convertible_v<char, Value>);

std::string ofText(const Text<>& text) { return toUtf8(text.json()); }
std::string ofValue(const Value& value) { return toUtf8(value.json()); }

/// The message of what is raised; empty when nothing is.
template <typename Action>
std::string invalid(Action action) {
    try {
        action();
        return {};
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

TEST(TypedText, IsAStringOfJsonWhateverItHolds) {
    using namespace std::string_literals;
    EXPECT_EQ(ofText(std::string("plain")), R"("plain")");
    EXPECT_EQ(ofText(""s), R"("")");
    EXPECT_EQ(ofText("\"\\\b\f\n\r\t/"s), R"("\"\\\b\f\n\r\t/")");
    EXPECT_EQ(ofText("a\0b\x1f\x7f"s), "\"a\\u0000b\\u001f\x7f\"");
    EXPECT_EQ(ofText("é 漢 📝"s), "\"é 漢 📝\"");
}

TEST(TypedText, IsTheSameFromUtf8AndFromUtf16) {
    const WideString wide = ORVEL_TEXT("\"é\" \n 漢 📝");
    const std::string utf8 = "\"é\" \n 漢 📝";
    EXPECT_EQ(ofText(wide), ofText(utf8));
    EXPECT_EQ(ofText(WideStringView(wide)), ofText(std::string_view(utf8)));
    EXPECT_EQ(ofText(wide.c_str()), ofText(utf8.c_str()));
    EXPECT_EQ(ofText("\"é\" \n 漢 📝"), ofText(utf8)) << "a literal";
    EXPECT_EQ(ofText(ORVEL_TEXT("\"é\" \n 漢 📝")), ofText(utf8)) << "a wide literal";
}

TEST(TypedText, SaysWhereATextIsNotWellFormed) {
    for (const std::string text :
         {"\x80", "\xC3", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
          "\xF8\x88\x80\x80\x80", "\xFF", "\xE6\xBC"}) {
        EXPECT_THAT(invalid([&] { ofText("ab" + text); }), HasSubstr("at byte 2")) << text;
    }
    for (const WideChar unit : {WideChar{0xD800}, WideChar{0xDBFF}, WideChar{0xDC00}}) {
        const WideString text = ORVEL_TEXT("ab") + WideString(1, unit) + ORVEL_TEXT("c");
        EXPECT_THAT(invalid([&] { ofText(text); }), HasSubstr("at code unit 2"));
    }
    EXPECT_THAT(invalid([] { ofText(WideString(1, WideChar{0xD83D})); }), HasSubstr("code unit 0"));
}

TEST(TypedText, ALiteralMayBeAsLongAsItsField) {
    EXPECT_EQ(toUtf8(Text<5>("hello").json()), R"("hello")");
    EXPECT_EQ(toUtf8(Text<6>("he\"ll").json()), R"("he\"ll")") << "a quotation mark counts twice";
    EXPECT_EQ(toUtf8(Text<2>("📝").json()), "\"📝\"") << "two code units of UTF-16";
    EXPECT_EQ(toUtf8(Text<1>("漢").json()), "\"漢\"") << "one code unit, three bytes";
    EXPECT_EQ(toUtf8(Text<6>("\x01").json()), R"("\u0001")");
    EXPECT_EQ(toUtf8(Text<0>("").json()), R"("")");
    EXPECT_EQ(toUtf8(Text<2>(ORVEL_TEXT("📝")).json()), "\"📝\"");
}

TEST(TypedText, TheLengthOfOtherTextsIsNotJudged) {
    EXPECT_EQ(toUtf8(Text<1>(std::string("long")).json()), R"("long")");
}

TEST(TypedInteger, IsWrittenAsItIs) {
    EXPECT_EQ(toUtf8(Integer(0).json()), "0");
    EXPECT_EQ(toUtf8(Integer(std::numeric_limits<std::int32_t>::min()).json()), "-2147483648");
    EXPECT_EQ(toUtf8(Integer(std::numeric_limits<std::int32_t>::max()).json()), "2147483647");
    EXPECT_EQ(toUtf8(Integer(std::uint16_t{65535}).json()), "65535");
}

TEST(TypedValue, IsAnyValueOfJson) {
    EXPECT_EQ(ofValue(Value(true)), "true");
    EXPECT_EQ(ofValue(Value(false)), "false");
    EXPECT_EQ(ofValue(Value(std::numeric_limits<std::uint64_t>::max())), "18446744073709551615");
    EXPECT_EQ(ofValue(Value(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
    EXPECT_EQ(ofValue(Value("a\"b")), R"("a\"b")");
    EXPECT_EQ(ofValue(Value(std::string("é"))), R"("é")");
    EXPECT_EQ(ofValue(Value(ORVEL_TEXT("é"))), R"("é")");
    EXPECT_EQ(ofValue(Value::array({})), "[]");
    EXPECT_EQ(ofValue(Value::object({})), "{}");
    EXPECT_EQ(ofValue(Value::array({1, "two", false, Value::array({2.5})})),
              R"([1,"two",false,[2.5]])");
    EXPECT_EQ(ofValue(Value::object({{"a", 1}, {"\"", Value::object({{"", "x"}})}})),
              R"({"a":1,"\"":{"":"x"}})");
}

TEST(TypedValue, ANumberIsReadBackUnchanged) {
    for (const double number : {0.1, -0.0, 1e300, 5e-324, 1.0 / 3.0, 123456789.125}) {
        EXPECT_EQ(std::strtod(ofValue(Value(number)).c_str(), nullptr), number);
    }
    EXPECT_EQ(ofValue(Value(1.5F)), "1.5");
}

TEST(TypedValue, ANumberThatIsNotFiniteIsRefused) {
    EXPECT_THAT(invalid([] { return Value(std::nan("")); }), HasSubstr("not finite"));
    EXPECT_THAT(invalid([] { return Value(std::numeric_limits<double>::infinity()); }),
                HasSubstr("not finite"));
}

TEST(EventValuesTest, MakeOneObjectOfWhatWasSet) {
    constexpr std::array<WideStringView, 3> kIds{ORVEL_TEXT("a"), ORVEL_TEXT("\""),
                                                 ORVEL_TEXT("c")};
    EventValues values(kIds.size());
    EXPECT_EQ(toUtf8(values.text(kIds)), "{}");
    values.set(2, Integer(3));
    EXPECT_EQ(toUtf8(values.text(kIds)), R"({"c":3})");
    values.set(1, Text<>("x"));
    values.set(2, Integer(4));
    EXPECT_EQ(toUtf8(values.text(kIds)), R"({"\"":"x","c":4})");
}

TEST(EventValuesTest, KeepAValueWhenItsSuccessorIsRefused) {
    constexpr std::array<WideStringView, 1> kIds{ORVEL_TEXT("a")};
    EventValues values(1);
    values.set(0, Text<>("kept"));
    EXPECT_NE(invalid([&] { values.set(0, Text<>(std::string("\xFF"))); }), "");
    EXPECT_EQ(toUtf8(values.text(kIds)), R"({"a":"kept"})");
}

}  // namespace
}  // namespace Orvel::Analytics::TypedEvents
