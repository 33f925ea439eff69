#include "dataclass/validation.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orvel/analytics/session.h"
#include "support/data_classes.h"
#include "support/session_access.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::Analytics::DataClass::DataClassFieldInfo;
using Orvel::Analytics::DataClass::firstDigits;
using Orvel::Analytics::Session::SessionAccess;
using Orvel::TestSupport::field;
using Orvel::TestSupport::TestDataClass;

constexpr int kMalformedJson = 15;
constexpr int kFieldValueTooLong = 29;
constexpr int kGenericError = 1;

int validated(TestDataClass& dataClass, WideStringView text) {
    return static_cast<int>(SessionAccess::validateEvent(dataClass, WideString(text)));
}

/// The result for one field `a` of a type, holding a JSON value.
int validated(WideStringView type, WideStringView value,
              WideStringView nullable = ORVEL_TEXT("true")) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), WideString(type), WideString(nullable))});
    return validated(dataClass, ORVEL_TEXT("{\"a\":") + WideString(value) + ORVEL_TEXT("}"));
}

TEST(ValidateEvent, RefusesWhatIsNoObjectWithMembers) {
    TestDataClass dataClass({});
    for (const WideStringView text :
         {ORVEL_TEXT(""), ORVEL_TEXT("{}"), ORVEL_TEXT("[1]"), ORVEL_TEXT("\"a\""),
          ORVEL_TEXT("{\"a\":1"), ORVEL_TEXT("null")}) {
        EXPECT_EQ(validated(dataClass, text), kMalformedJson);
    }
    EXPECT_EQ(dataClass.timesAsked, 0) << "fields are asked for only when there are members";
}

TEST(ValidateEvent, AcceptsMembersThatAreNoField) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("integer"))});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"other\":\"x\"}")), 0);
    EXPECT_EQ(dataClass.timesAsked, 1);
}

TEST(ValidateEvent, AcceptsAnyMembersForAClassWithoutFields) {
    TestDataClass dataClass({});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"x\":null}")), 0);
}

TEST(ValidateEvent, AcceptsAnEventThatLacksAFieldThatIsNotNullable) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("integer"), ORVEL_TEXT("false"))});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"b\":1}")), 0);
}

TEST(ValidateEvent, FindsFieldsByIdentifierNotByName) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("integer"))});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"a name\":\"x\"}")), 0);
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"A\":\"x\"}")), 0);
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"\\u0061\":\"x\"}")), kGenericError);
}

TEST(ValidateInteger, AcceptsWhatBeginsWithANumberOf32Bits) {
    for (const WideStringView value :
         {ORVEL_TEXT("2147483647"), ORVEL_TEXT("-2147483648"), ORVEL_TEXT("42"), ORVEL_TEXT("-7"),
          ORVEL_TEXT("3.9"), ORVEL_TEXT("12.75"), ORVEL_TEXT("1e99"), ORVEL_TEXT("0")}) {
        EXPECT_EQ(validated(ORVEL_TEXT("integer"), value), 0) << testing::PrintToString(value);
    }
}

TEST(ValidateInteger, RefusesEveryOtherValue) {
    for (const WideStringView value :
         {ORVEL_TEXT("2147483648"), ORVEL_TEXT("-2147483649"), ORVEL_TEXT("\"12\""),
          ORVEL_TEXT("true"), ORVEL_TEXT("null"), ORVEL_TEXT("[1]"), ORVEL_TEXT("{\"b\":1}"),
          ORVEL_TEXT("\"\"")}) {
        EXPECT_EQ(validated(ORVEL_TEXT("integer"), value), kGenericError)
            << testing::PrintToString(value);
    }
}

TEST(ValidateInteger, KnowsTheExactTypeTextOnly) {
    for (const WideStringView type :
         {ORVEL_TEXT("Integer"), ORVEL_TEXT("int"), ORVEL_TEXT("integer "), ORVEL_TEXT(""),
          ORVEL_TEXT("bigint"), ORVEL_TEXT("VARCHAR(1)"), ORVEL_TEXT("text")}) {
        EXPECT_EQ(validated(type, ORVEL_TEXT("\"not a number\"")), 0);
    }
}

TEST(ValidateVarchar, MeasuresStringsInCodeUnits) {
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(5)"), ORVEL_TEXT("\"hello\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(5)"), ORVEL_TEXT("\"hello!\"")), kFieldValueTooLong);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(2)"), ORVEL_TEXT("\"\U0001F600\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("\"\U0001F600\"")),
              kFieldValueTooLong);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("\"\u6f22\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(0)"), ORVEL_TEXT("\"\"")), 0);
}

TEST(ValidateVarchar, MeasuresTheTextAsItIsSerialisedAgain) {
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(5)"), ORVEL_TEXT("\"he\\\"lo\"")), kFieldValueTooLong);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(2)"), ORVEL_TEXT("\"\\\\\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("\"\\\\\"")), kFieldValueTooLong);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("\"\\/\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(1)"), ORVEL_TEXT("\"\\u0041\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(6)"), ORVEL_TEXT("\"\\u0001\"")), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(5)"), ORVEL_TEXT("\"\\u0001\"")), kFieldValueTooLong);
}

TEST(ValidateVarchar, TakesTwoUnitsOffAnyOtherValueToo) {
    const auto measures = [](WideStringView value, int length) {
        const WideString fits = Orvel::toWide("varchar(" + std::to_string(length) + ")");
        const WideString isShort = Orvel::toWide("varchar(" + std::to_string(length - 1) + ")");
        return validated(fits, value) == 0 &&
               (length == 0 || validated(isShort, value) == kFieldValueTooLong);
    };
    EXPECT_TRUE(measures(ORVEL_TEXT("12345"), 3));
    EXPECT_TRUE(measures(ORVEL_TEXT("null"), 2));
    EXPECT_TRUE(measures(ORVEL_TEXT("5"), 0));
    EXPECT_TRUE(measures(ORVEL_TEXT("[1, 2]"), 3));
    EXPECT_TRUE(measures(ORVEL_TEXT("{\"b\" : 1}"), 5));
    EXPECT_TRUE(measures(ORVEL_TEXT("true"), 2));
}

TEST(ValidateVarchar, FindsTheWordAnywhereInTheType) {
    EXPECT_EQ(validated(ORVEL_TEXT("nvarchar(1)"), ORVEL_TEXT("\"ab\"")), kFieldValueTooLong);
    EXPECT_EQ(validated(ORVEL_TEXT("1 varchar"), ORVEL_TEXT("\"ab\"")), kFieldValueTooLong);
    EXPECT_EQ(validated(ORVEL_TEXT("VARCHAR(1)"), ORVEL_TEXT("\"ab\"")), 0);
}

TEST(ValidateVarchar, TakesTheFirstDigitsAsTheLimit) {
    const WideString ten(10, 'x');
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(10)x20"), ORVEL_TEXT("\"") + ten + ORVEL_TEXT("\"")),
              0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(10)x20"), ORVEL_TEXT("\"") + ten + ORVEL_TEXT("x\"")),
              kFieldValueTooLong);
    const WideString thirtyTwo(32, 'x');
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(00000000032)"),
                        ORVEL_TEXT("\"") + thirtyTwo + ORVEL_TEXT("\"")),
              0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(00000000032)"),
                        ORVEL_TEXT("\"") + thirtyTwo + ORVEL_TEXT("x\"")),
              kFieldValueTooLong);
}

TEST(ValidateVarchar, HoldsATypeWithoutDigitsToTheLastLimit) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(5)")),
                             field(ORVEL_TEXT("b"), ORVEL_TEXT("varchar"))});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"a\":\"x\",\"b\":\"seven..\"}")),
              kFieldValueTooLong);
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"a\":\"x\",\"b\":\"five.\"}")), 0);
}

TEST(ValidateVarchar, TakesNoLimitFromAnAbsentField) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(5)")),
                             field(ORVEL_TEXT("b"), ORVEL_TEXT("varchar"))});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"b\":\"seven..\"}")), 0);
}

TEST(ValidateVarchar, HasNoLimitWhenNoneIsKnown) {
    const WideString value = ORVEL_TEXT("\"") + WideString(100'000, 'x') + ORVEL_TEXT("\"");
    EXPECT_EQ(validated(ORVEL_TEXT("varchar"), value), 0);
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(\u0661)"), value), 0);
}

TEST(ValidateVarchar, RaisesForALimitBeyond32Bits) {
    for (const WideStringView type :
         {ORVEL_TEXT("varchar(12345678901)"), ORVEL_TEXT("varchar(2147483648)")}) {
        try {
            validated(type, ORVEL_TEXT("\"x\""));
            FAIL() << "nothing was raised";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "stoi argument out of range");
        }
    }
    EXPECT_EQ(validated(ORVEL_TEXT("varchar(2147483647)"), ORVEL_TEXT("\"x\"")), 0);
    TestDataClass absent({field(ORVEL_TEXT("b"), ORVEL_TEXT("varchar(12345678901)"))});
    EXPECT_EQ(validated(absent, ORVEL_TEXT("{\"a\":1}")), 0);
}

TEST(ValidateEvent, GivesTheResultOfTheFirstFieldAtFault) {
    TestDataClass lengthFirst({field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(1)")),
                               field(ORVEL_TEXT("b"), ORVEL_TEXT("integer"))});
    TestDataClass numberFirst({field(ORVEL_TEXT("b"), ORVEL_TEXT("integer")),
                               field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(1)"))});
    const WideStringView event = ORVEL_TEXT("{\"a\":\"long\",\"b\":\"x\"}");
    EXPECT_EQ(validated(lengthFirst, event), kFieldValueTooLong);
    EXPECT_EQ(validated(numberFirst, event), kGenericError);
}

TEST(ValidateEvent, TakesANullForAValueOnThisPlatform) {
    EXPECT_EQ(validated(ORVEL_TEXT("text"), ORVEL_TEXT("null"), ORVEL_TEXT("false")), 0);
}

TEST(ValidateEvent, JudgesTheLastOfEqualNames) {
    TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("integer"))});
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"a\":\"x\",\"a\":1}")), 0);
    EXPECT_EQ(validated(dataClass, ORVEL_TEXT("{\"a\":1,\"a\":\"x\"}")), kGenericError);
}

TEST(ValidateEvent, LetsAnErrorOfTheFieldsLeave) {
    class Failing final : public Orvel::Analytics::DataClass::BaseDataClass {
      public:
        void reservedOperation() override {}
        std::list<DataClassFieldInfo> getFields() override {
            throw std::runtime_error("no fields today");
        }
    } dataClass;
    EXPECT_THROW(SessionAccess::validateEvent(dataClass, ORVEL_TEXT("{\"a\":1}")),
                 std::runtime_error);
}

TEST(ValidateEvent, IsNotDisturbedByOtherValidationsOfTheSameSession) {
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t i = 0; i < wrong.size(); ++i) {
        threads.emplace_back([&wrong, i] {
            TestDataClass dataClass({field(ORVEL_TEXT("a"), ORVEL_TEXT("varchar(3)"))});
            const bool fits = i % 2 == 0;
            const WideStringView event =
                fits ? ORVEL_TEXT("{\"a\":\"abc\"}") : ORVEL_TEXT("{\"a\":\"abcd\"}");
            for (int round = 0; round < 500; ++round) {
                wrong[i] += validated(dataClass, event) == (fits ? 0 : kFieldValueTooLong) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST(FirstDigits, FindsWhatTheRegularExpressionFinds) {
    // The library's scan stands for this expression; char16_t has no regex traits, hence the
    // widening.
    const std::wregex digits(L"([0-9]+)");
    const auto byExpression = [&](WideStringView type) {
        const std::wstring wide(type.begin(), type.end());
        std::wsmatch match;
        const std::wstring found =
            std::regex_search(wide, match, digits) ? match[1].str() : std::wstring();
        return WideString(found.begin(), found.end());
    };
    std::mt19937 random(20260101);
    const WideStringView alphabet = ORVEL_TEXT("varch()0123459 x\u0661\uFF11\u00B2/:");
    for (int round = 0; round < 5000; ++round) {
        WideString type;
        for (auto units = random() % 24; units > 0; --units) {
            type += alphabet[random() % alphabet.size()];
        }
        ASSERT_EQ(WideString(firstDigits(type)), byExpression(type))
            << testing::PrintToString(type);
    }
}

TEST(FirstDigits, TakesATypeOfAnyLength) {
    const WideString digits(1'000'000, '7');
    EXPECT_EQ(firstDigits(ORVEL_TEXT("varchar(") + digits + ORVEL_TEXT(")")).size(), digits.size());
}

}  // namespace
