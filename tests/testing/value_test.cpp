#include "orvel/analytics/testing/value.h"

#include <gmock/gmock.h>

#include <clocale>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace Orvel::Analytics::Testing {
namespace {

using testing::ElementsAre;

static_assert(!std::is_convertible_v<double, Value>, "how it is written is not known");
static_assert(!std::is_convertible_v<char, Value>);
static_assert(!std::is_convertible_v<void*, Value>, "a pointer is no truth value");
static_assert(std::is_nothrow_move_constructible_v<Value>);

TEST(AValue, IsReadFromJson) {
    const Value value = Value::parse(
        R"( {"a" : [null, true, false, -7, "x\u0041\n"], "b": {}, "c": "", "d": []} )");
    EXPECT_EQ(value.kind(), Value::Kind::Object);
    EXPECT_THAT(value.names(), ElementsAre("a", "b", "c", "d"));
    const Value& list = value.at("a");
    EXPECT_EQ(list.size(), 5U);
    EXPECT_TRUE(list.at(0).isNull());
    EXPECT_TRUE(list.at(1).boolean());
    EXPECT_FALSE(list.at(2).boolean());
    EXPECT_EQ(list.at(3).integer(), -7);
    EXPECT_EQ(list.at(4).string(), "xA\n");
    EXPECT_EQ(value.at("b").kind(), Value::Kind::Object);
    EXPECT_EQ(value.at("d").kind(), Value::Kind::Array);
    EXPECT_EQ(value.json(), R"({"a":[null,true,false,-7,"xA\u000a"],"b":{},"c":"","d":[]})");
}

TEST(AValue, KeepsANumberAsItIsWritten) {
    for (const char* written :
         {"0", "-0", "1.50", "-0.0", "1e10", "1E+2", "123456789012345678901234567890",
          "9223372036854775807", "9223372036854775808", "-9223372036854775808", "0.1e-7"}) {
        EXPECT_EQ(Value::parse(written).written(), written);
        EXPECT_EQ(Value::number(written).json(), written);
    }
    for (const char* other : {"", "1.", "+1", "01", "1 2", "\"1\"", "null", "0x1"}) {
        EXPECT_THROW(static_cast<void>(Value::number(other)), std::invalid_argument) << other;
    }
}

TEST(AValue, HasAnIntegerWhereItIsWrittenAsOneOf64Bits) {
    EXPECT_EQ(Value::parse("9223372036854775807").integer(), INT64_MAX);
    EXPECT_EQ(Value::parse("-9223372036854775808").integer(), INT64_MIN);
    for (const char* other :
         {"9223372036854775808", "1.0", "1e2", "\"1\"", "null", "true", "[1]"}) {
        EXPECT_EQ(Value::parse(other).integer(), std::nullopt) << other;
    }
}

TEST(AValue, IsMadeOfWhatATestWritesDown) {
    EXPECT_EQ(Value("text").json(), "\"text\"");
    EXPECT_EQ(Value(std::string("a\"\\\x01")).json(), R"("a\"\\\u0001")");
    EXPECT_EQ(Value(true).json(), "true");
    EXPECT_EQ(Value(nullptr).json(), "null");
    EXPECT_EQ(Value(-3).json(), "-3");
    EXPECT_EQ(Value(std::uint64_t{18446744073709551615U}).json(), "18446744073709551615");
    EXPECT_EQ(Value(std::int8_t{7}).json(), "7");
}

TEST(AValue, IsEqualByKindAndContent) {
    EXPECT_EQ(Value::parse("\"a\""), "a");
    EXPECT_EQ("a", Value("a"));
    EXPECT_EQ(Value::parse("12"), 12);
    EXPECT_NE(Value::parse("12"), "12");
    EXPECT_NE(Value::parse("1.0"), 1) << "it is written otherwise";
    EXPECT_NE(Value::parse("null"), "null");
    EXPECT_NE(Value::parse("true"), "true");
    EXPECT_EQ(Value::parse(R"({"a":1,"b":[2]})"), Value::parse(R"({"b":[2],"a":1})"));
    EXPECT_NE(Value::parse(R"({"a":1})"), Value::parse(R"({"b":1})"));
    EXPECT_NE(Value::parse(R"({"a":1})"), Value::parse(R"({"a":1,"b":1})"));
    EXPECT_NE(Value::parse("[1,2]"), Value::parse("[2,1]"));
    EXPECT_NE(Value::parse("[]"), Value::parse("{}"));
}

TEST(AValue, TellsWhatIsNotThere) {
    const Value value = Value::parse(R"({"a":[1]})");
    EXPECT_EQ(value.find("b"), nullptr);
    EXPECT_EQ(value.at("a").find("a"), nullptr);
    EXPECT_THROW(static_cast<void>(value.at("b")), std::out_of_range);
    EXPECT_THROW(static_cast<void>(value.at("a").at(1)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(value.at(0)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(value.string()), std::logic_error);
    EXPECT_THROW(static_cast<void>(value.written()), std::logic_error);
    EXPECT_THROW(static_cast<void>(value.boolean()), std::logic_error);
}

TEST(AValue, GivesAMemberAway) {
    Value value = Value::parse(R"({"a":1,"b":2,"c":3})");
    EXPECT_EQ(value.take("b"), 2);
    EXPECT_TRUE(value.take("b").isNull());
    EXPECT_EQ(value, Value::parse(R"({"a":1,"c":3})"));
}

TEST(AValue, HasTheLastOfEqualMembersInThePlaceOfTheFirst) {
    EXPECT_EQ(Value::parse(R"({"a":1,"b":2,"a":3})").json(), R"({"a":3,"b":2})");
}

TEST(AValue, IsNotReadFromWhatIsNoJson) {
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("[1,]"), std::string("nul"),
          std::string("{} x"), std::string("\xEF\xBB\xBF{}"), std::string("{}\0", 3),
          std::string("\"\xFF\""), std::string("\"\\uD800\"")}) {
        EXPECT_THROW(static_cast<void>(Value::parse(text)), std::invalid_argument) << text;
    }
}

TEST(AValue, IsReadAlikeInALocaleWithAnotherPoint) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    const bool hasLocale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr ||
                           std::setlocale(LC_NUMERIC, "de-DE") != nullptr;
    const Value value = Value::parse("[1.5]");
    std::setlocale(LC_NUMERIC, before.c_str());
    if (!hasLocale) {
        GTEST_SKIP() << "this machine has no locale with another point";
    }
    EXPECT_EQ(value.json(), "[1.5]");
}

TEST(AValue, NestsAsDeepAsALibraryLets) {
    std::string deep(1100, '[');
    deep.append(1100, ']');
    const Value value = Value::parse(deep);
    EXPECT_EQ(Value(value).json(), deep);
    EXPECT_EQ(value, Value::parse(deep));
}

TEST(AValue, IsPrintedAsJson) {
    std::ostringstream out;
    out << Value::parse("[1, \"a\"]");
    EXPECT_EQ(out.str(), "[1,\"a\"]");
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
