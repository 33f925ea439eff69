#include "service/event_rules.h"

#include <gtest/gtest.h>

#include <string>

namespace Orvel::Service {
namespace {

Field field(const std::string& id, const std::string& type, const std::string& nullable = "true") {
    return {.id = id, .name = "a name", .nullable = nullable, .type = type};
}

/// The field that a rule refuses, "" when none does.
std::string broken(const std::vector<Field>& fields, const std::string& values) {
    EventRules rules(fields);
    const JsonDocument document = JsonDocument::parseObject(values);
    return std::string(rules.brokenField(document.root()).value_or(""));
}

bool accepts(const std::string& type, const std::string& value) {
    return broken({field("f", type)}, R"({"f":)" + value + "}").empty();
}

TEST(EventRulesTest, IntegerIsAnyNumberWhoseTextBeginsWithin32Bits) {
    for (const char* value : {"0", "-0", "42", "-7", "3.9", "2147483647", "-2147483648",
                              "2147483647.9", "1e99", "12.75"}) {
        EXPECT_TRUE(accepts("integer", value)) << value;
    }
    for (const char* value : {"2147483648", "-2147483649", "2147483648.5", "99999999999999999999",
                              "\"12\"", "true", "null", "[1]", "{\"a\":1}"}) {
        EXPECT_FALSE(accepts("integer", value)) << value;
    }
}

TEST(EventRulesTest, OnlyTheExactWordIntegerIsChecked) {
    for (const char* type : {"Integer", "int", "integer ", "", "number", "VARCHAR(1)"}) {
        EXPECT_TRUE(accepts(type, "\"some text\"")) << type;
    }
}

TEST(EventRulesTest, VarcharIsMeasuredInUtf16CodeUnitsOfItsText) {
    EXPECT_TRUE(accepts("varchar(5)", R"("hello")"));
    EXPECT_FALSE(accepts("varchar(5)", R"("hello!")"));
    EXPECT_FALSE(accepts("varchar(5)", R"("he\"lo!")"));
    EXPECT_TRUE(accepts("varchar(5)", R"("he\"l")"));
    EXPECT_TRUE(accepts("varchar(1)", "\"\u4E2D\""));
    EXPECT_FALSE(accepts("varchar(1)", "\"\U0001F600\""));
    EXPECT_TRUE(accepts("varchar(2)", R"("\/\u0041")"));
    EXPECT_FALSE(accepts("varchar(5)", R"("\u0001")"));
    EXPECT_TRUE(accepts("varchar(6)", R"("\u0001")"));
}

TEST(EventRulesTest, MeasuresAValueOnceForAllFieldsOfItsName) {
    // Measured for each of them, it would keep the service busy for minutes.
    constexpr std::size_t kLength = 4'000'000;
    const std::vector<Field> fields(200'000, field("f", "varchar(4000000)"));
    EXPECT_EQ(broken(fields, R"({"f":")" + std::string(kLength, 'x') + R"("})"), "");
    EXPECT_EQ(broken(fields, R"({"f":")" + std::string(kLength + 1, 'x') + R"("})"), "f");
}

TEST(EventRulesTest, VarcharOfOtherValuesLosesTheirFirstAndLastCharacter) {
    EXPECT_TRUE(accepts("varchar(0)", "5"));
    EXPECT_TRUE(accepts("varchar(3)", "12345"));
    EXPECT_FALSE(accepts("varchar(2)", "12345"));
    EXPECT_FALSE(accepts("varchar(1)", "null"));
    EXPECT_TRUE(accepts("varchar(2)", "null"));
    EXPECT_TRUE(accepts("varchar(3)", "[ 1, 2 ]"));
}

TEST(EventRulesTest, VarcharLimitIsTheFirstRunOfDigits) {
    EXPECT_TRUE(accepts("varchar(10)x20", R"("0123456789")"));
    EXPECT_FALSE(accepts("varchar(10)x20", R"("0123456789a")"));
    EXPECT_FALSE(accepts("2 nvarchar(10)", R"("abc")"));
    EXPECT_FALSE(accepts("varchar(00000000002)", R"("abc")"));
}

TEST(EventRulesTest, VarcharWithoutAKnownLimitHasNone) {
    EXPECT_TRUE(accepts("varchar", '"' + std::string(10'000, 'x') + '"'));
}

TEST(EventRulesTest, VarcharLimitBeyondTheRangeIsNone) {
    EXPECT_TRUE(accepts("varchar(2147483648)", R"("abc")"));
    EXPECT_TRUE(accepts("varchar(" + std::string(20'000, '9') + ")", R"("abc")"));
}

TEST(EventRulesTest, VarcharLimitIsCarriedToALaterTypeWithoutDigits) {
    const std::vector fields = {field("a", "varchar(5)"), field("b", "varchar"),
                                field("c", "varchar")};
    EXPECT_EQ(broken(fields, R"({"a":"x","b":"12345","c":"123456"})"), "c");
    EXPECT_EQ(broken(fields, R"({"b":"123456","c":"1234567"})"), "") << "an absent one sets none";
    EXPECT_EQ(
        broken({field("a", "varchar(5)"), field("x", "varchar(9999999999)"), field("b", "varchar")},
               R"({"a":"x","x":"","b":"123456"})"),
        "");
}

TEST(EventRulesTest, FieldThatIsNotNullableMustHaveAValue) {
    EXPECT_EQ(broken({field("f", "text", "false")}, R"({})"), "f");
    EXPECT_EQ(broken({field("f", "text", "False")}, R"({"f":null})"), "f");
    EXPECT_EQ(broken({field("f", "text", "false")}, R"({"f":""})"), "");
    for (const char* nullable : {"FALSE", "false ", "", "no", "true"}) {
        EXPECT_EQ(broken({field("f", "text", nullable)}, R"({})"), "") << nullable;
        EXPECT_EQ(broken({field("f", "text", nullable)}, R"({"f":null})"), "") << nullable;
    }
}

TEST(EventRulesTest, FirstFieldInTheClassesOrderIsNamed) {
    const std::vector fields = {field("b", "integer"), field("a", "integer")};
    EXPECT_EQ(broken(fields, R"({"a":"x","b":"x"})"), "b");
}

TEST(EventRulesTest, MembersThatAreNoFieldsAreAllowed) {
    EXPECT_EQ(broken({}, R"({"a":"x","b":null})"), "");
}

TEST(EventRulesTest, StampedMembersAreNotJudgedAsFields) {
    const std::vector fields = {field("DT", "integer", "false"), field("V", "varchar(1)", "false")};
    EXPECT_EQ(broken(fields, R"({"DT":"20240131T235959","V":"1.0"})"), "");
}

TEST(EventRulesTest, LastOfTwoEqualMembersIsJudged) {
    EXPECT_EQ(broken({field("f", "integer")}, R"({"f":"x","\u0066":1})"), "");
    EXPECT_EQ(broken({field("f", "integer")}, R"({"f":1,"f":"x"})"), "f");
}

TEST(EventRulesTest, EveryFieldOfOneIdentifierJudgesTheValue) {
    EXPECT_EQ(broken({field("f", "integer"), field("f", "varchar(1)")}, R"({"f":1234})"), "f");
}

TEST(EventRulesTest, RulesStayValidWhenTheyAreMoved) {
    EventRules rules({field("f", "integer")});
    EventRules moved(std::move(rules));
    const JsonDocument document = JsonDocument::parseObject(R"({"f":"x"})");
    EXPECT_EQ(moved.brokenField(document.root()), "f");
}

}  // namespace
}  // namespace Orvel::Service
