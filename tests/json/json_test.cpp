/// What every backend of the JSON layer does alike.

#include "json/json.h"

#include <gtest/gtest.h>

#include <string>

#include "json/raise.h"
#include "support/raised_status.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::TestSupport::raisedStatus;
using testing::PrintToString;
using namespace Orvel::Analytics::Json;

std::uint32_t parseStatus(WideStringView text) {
    Document document;
    return raisedStatus([&] { static_cast<void>(document.parseObject(text)); });
}

WideString reserialised(WideStringView text) {
    Document document;
    return document.parseObject(text).stringify();
}

WideString nested(std::size_t depth) {
    WideString text = ORVEL_TEXT("{\"a\":");
    text.append(depth - 1, '[').append(depth - 1, ']');
    return text + ORVEL_TEXT("}");
}

TEST(JsonParse, ReadsAnEmptyObject) {
    Document document;
    EXPECT_EQ(document.parseObject(ORVEL_TEXT("{}")).size(), 0U);
}

TEST(JsonParse, AcceptsBlanksAroundTheValue) {
    EXPECT_EQ(reserialised(ORVEL_TEXT(" \t\r\n{ \"a\" : [ ] }\n ")), ORVEL_TEXT("{\"a\":[]}"));
}

TEST(JsonParse, RefusesWhatIsNoObject) {
    for (const WideStringView text :
         {ORVEL_TEXT(""), ORVEL_TEXT(" "), ORVEL_TEXT("[]"), ORVEL_TEXT("[1]"),
          ORVEL_TEXT("\"text\""), ORVEL_TEXT("1"), ORVEL_TEXT("null"), ORVEL_TEXT("text")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
}

TEST(JsonParse, RefusesMalformedText) {
    for (const WideStringView text : {ORVEL_TEXT("{"),
                                      ORVEL_TEXT("{\"a\"}"),
                                      ORVEL_TEXT("{\"a\":1"),
                                      ORVEL_TEXT("{\"a\":1,}"),
                                      ORVEL_TEXT("{\"a\":[1,]}"),
                                      ORVEL_TEXT("{\"a\":1 \"b\":2}"),
                                      ORVEL_TEXT("{a:1}"),
                                      ORVEL_TEXT("{'a':1}"),
                                      ORVEL_TEXT("{\"a\":True}"),
                                      ORVEL_TEXT("{\"a\":\"\t\"}"),
                                      ORVEL_TEXT("{\"a\":\"\\u123\"}"),
                                      ORVEL_TEXT("{\"a\":\"\\x\"}"),
                                      ORVEL_TEXT("{\"a\":\"open}"),
                                      ORVEL_TEXT("{\"a\":01}"),
                                      ORVEL_TEXT("{\"a\":1.}"),
                                      ORVEL_TEXT("{\"a\":.5}"),
                                      ORVEL_TEXT("{\"a\":+1}"),
                                      ORVEL_TEXT("{\"a\":0x10}"),
                                      ORVEL_TEXT("{\"a\":NaN}"),
                                      ORVEL_TEXT("{\"a\":Infinity}"),
                                      ORVEL_TEXT("\v{}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
}

TEST(JsonParse, RefusesCommentsAndTextAfterTheValue) {
    for (const WideStringView text :
         {ORVEL_TEXT("{} {}"), ORVEL_TEXT("{}x"), ORVEL_TEXT("{},"), ORVEL_TEXT("/**/{}"),
          ORVEL_TEXT("{}//"), ORVEL_TEXT("{\"a\"/**/:1}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
    EXPECT_EQ(parseStatus(WideString(ORVEL_TEXT("{}")) + WideString(1, 0)),
              Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(WideString(ORVEL_TEXT("{}")) + WideString(1, 1)),
              Status::kInvalidJsonString);
}

TEST(JsonParse, RefusesAByteOrderMark) {
    EXPECT_EQ(parseStatus(WideString(1, 0xFEFF) + ORVEL_TEXT("{}")), Status::kInvalidJsonString);
}

TEST(JsonParse, RefusesUnpairedSurrogatesRawAndEscaped) {
    const WideString open = ORVEL_TEXT("{\"a\":\"");
    const WideString close = ORVEL_TEXT("\"}");
    EXPECT_EQ(parseStatus(open + WideString(1, 0xD83D) + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + WideString(1, 0xDE00) + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + ORVEL_TEXT("\\ud83d") + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + ORVEL_TEXT("\\ude00") + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + ORVEL_TEXT("\\ud83d\\u0041") + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + ORVEL_TEXT("\\ud83d\\ude00") + close), 0U);
}

TEST(JsonParse, RefusesNumbersOutOfTheDoubleRange) {
    for (const WideStringView text :
         {ORVEL_TEXT("{\"a\":1.797e+3080}"), ORVEL_TEXT("{\"a\":-1e309}"),
          ORVEL_TEXT("{\"a\":2.2e-3080}"), ORVEL_TEXT("{\"a\":1e-400}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonNumber) << PrintToString(WideString(text));
    }
    const WideString tooLarge(400, '9');
    EXPECT_EQ(parseStatus(ORVEL_TEXT("{\"a\":") + tooLarge + ORVEL_TEXT("}")),
              Status::kInvalidJsonNumber);
    const WideString tooSmall = ORVEL_TEXT("0.") + WideString(400, '0') + ORVEL_TEXT("1");
    EXPECT_EQ(parseStatus(ORVEL_TEXT("{\"a\":") + tooSmall + ORVEL_TEXT("}")),
              Status::kInvalidJsonNumber);
}

TEST(JsonParse, AcceptsEveryNumberWithinTheDoubleRange) {
    const WideString longZero = ORVEL_TEXT("0.") + WideString(400, '0');
    for (const WideString& number :
         {WideString(ORVEL_TEXT("1.7976931348623157e308")), WideString(ORVEL_TEXT("-0")),
          WideString(ORVEL_TEXT("0e-9999")), WideString(ORVEL_TEXT("0.0E+9999")), longZero,
          WideString(ORVEL_TEXT("2.2250738585072014e-308"))}) {
        EXPECT_EQ(parseStatus(ORVEL_TEXT("{\"a\":") + number + ORVEL_TEXT("}")), 0U)
            << PrintToString(number);
    }
}

TEST(JsonParse, RefusesNestingBeyond1024) {
    EXPECT_EQ(parseStatus(nested(1024)), 0U);
    EXPECT_EQ(parseStatus(nested(1025)), Status::kImplementationLimit);
    EXPECT_EQ(parseStatus(nested(100'000)), Status::kImplementationLimit);
}

TEST(JsonParse, KeepsTheLastOfEqualNames) {
    EXPECT_EQ(reserialised(ORVEL_TEXT("{\"a\":1,\"b\":2,\"a\":3}")),
              ORVEL_TEXT("{\"a\":3,\"b\":2}"));
    EXPECT_EQ(reserialised(ORVEL_TEXT("{\"a\":1,\"\\u0061\":[2],\"a\":{\"c\":1,\"c\":null}}")),
              ORVEL_TEXT("{\"a\":{\"c\":null}}"));
}

TEST(JsonParse, KeepsTheLastOfEqualNamesAmongMany) {
    WideString text = ORVEL_TEXT("{");
    for (int round = 0; round < 2; ++round) {
        for (int name = 0; name < 100; ++name) {
            text +=
                Orvel::toWide("\"n" + std::to_string(name) + "\":" + std::to_string(round) + ",");
        }
    }
    text.back() = '}';
    Document document;
    const Object object = document.parseObject(text);
    EXPECT_EQ(object.size(), 100U);
    EXPECT_EQ(object.getView().lookup(ORVEL_TEXT("n99"))->stringify(), ORVEL_TEXT("1"));
    EXPECT_EQ(object.getView().lookup(ORVEL_TEXT("n0"))->stringify(), ORVEL_TEXT("1"));
}

TEST(JsonRead, RaisesForAMissingMember) {
    Document document;
    const Object object = document.parseObject(ORVEL_TEXT("{\"name\":\"x\"}"));
    for (const WideStringView name : {ORVEL_TEXT("Name"), ORVEL_TEXT(""), ORVEL_TEXT("other")}) {
        EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedString(name)); }),
                  Status::kValueNotFound);
        EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedBoolean(name)); }),
                  Status::kValueNotFound);
        EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedObject(name)); }),
                  Status::kValueNotFound);
        EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedArray(name)); }),
                  Status::kValueNotFound);
    }
}

TEST(JsonRead, RaisesForAMemberOfAnotherType) {
    Document document;
    const Object object =
        document.parseObject(ORVEL_TEXT("{\"s\":\"true\",\"n\":1,\"b\":true,\"z\":null,"
                                        "\"o\":{},\"a\":[]}"));
    const auto status = [&](auto operation) {
        std::uint32_t common = Status::kIllegalMethodCall;
        for (const WideStringView name : {ORVEL_TEXT("n"), ORVEL_TEXT("z")}) {
            common = std::min(common, raisedStatus([&] { static_cast<void>(operation(name)); }));
        }
        return common;
    };
    EXPECT_EQ(status([&](WideStringView n) { return object.getNamedString(n); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(status([&](WideStringView n) { return object.getNamedBoolean(n); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(status([&](WideStringView n) { return object.getNamedObject(n); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(status([&](WideStringView n) { return object.getNamedArray(n); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedBoolean(ORVEL_TEXT("s"))); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedObject(ORVEL_TEXT("a"))); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedArray(ORVEL_TEXT("o"))); }),
              Status::kIllegalMethodCall);
}

TEST(JsonRead, GivesMembersOfTheirType) {
    Document document;
    const Object object = document.parseObject(ORVEL_TEXT(
        "{\"s\":\"\\u00e9\\n\",\"t\":true,\"f\":false,\"o\":{\"x\":1},\"a\":[1,\"2\"]}"));
    EXPECT_EQ(object.getNamedString(ORVEL_TEXT("s")), ORVEL_TEXT("\u00e9\n"));
    EXPECT_TRUE(object.getNamedBoolean(ORVEL_TEXT("t")));
    EXPECT_FALSE(object.getNamedBoolean(ORVEL_TEXT("f")));
    EXPECT_EQ(object.getNamedObject(ORVEL_TEXT("o")).stringify(), ORVEL_TEXT("{\"x\":1}"));
    const Array array = object.getNamedArray(ORVEL_TEXT("a"));
    ASSERT_EQ(array.size(), 2U);
    EXPECT_EQ(array.getAt(0).stringify(), ORVEL_TEXT("1"));
    EXPECT_EQ(array.getAt(1).stringify(), ORVEL_TEXT("\"2\""));
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(array.getAt(2)); }), Status::kOutOfBounds);
}

TEST(JsonView, TellsPresenceWithoutFailing) {
    Document document;
    const Object object = document.parseObject(ORVEL_TEXT("{\"a\":1,\"\":2,\"z\":null}"));
    EXPECT_EQ(object.size(), 3U);
    const ObjectView view = object.getView();
    EXPECT_TRUE(view.hasKey(ORVEL_TEXT("a")));
    EXPECT_TRUE(view.hasKey(ORVEL_TEXT("")));
    EXPECT_FALSE(view.hasKey(ORVEL_TEXT("A")));
    EXPECT_FALSE(view.hasKey(WideString(1, 0xD800)));
}

TEST(JsonView, GivesANullAsAValueObject) {
    Document document;
    const ObjectView view = document.parseObject(ORVEL_TEXT("{\"z\":null}")).getView();
    const auto value = view.lookup(ORVEL_TEXT("z"));
    ASSERT_TRUE(value);
    EXPECT_EQ(value->stringify(), ORVEL_TEXT("null"));
}

TEST(JsonBuild, SettingAMemberTwiceLeavesTheSecondValue) {
    Document document;
    Object object = document.newObject();
    object.setNamedValue(ORVEL_TEXT("a"), document.stringValue(ORVEL_TEXT("first")));
    object.setNamedValue(ORVEL_TEXT("a"), document.stringValue(ORVEL_TEXT("second")));
    EXPECT_EQ(object.size(), 1U);
    EXPECT_EQ(object.stringify(), ORVEL_TEXT("{\"a\":\"second\"}"));
}

TEST(JsonBuild, SetsMembersOfAParsedObject) {
    Document document;
    Object object = document.parseObject(ORVEL_TEXT("{\"D\\u0054\":5,\"a\":1,\"DT\":6}"));
    object.setNamedValue(ORVEL_TEXT("DT"), document.stringValue(ORVEL_TEXT("now")));
    EXPECT_EQ(object.size(), 2U);
    EXPECT_EQ(object.getNamedString(ORVEL_TEXT("DT")), ORVEL_TEXT("now"));
}

TEST(JsonBuild, SerialisesEveryMemberAndElement) {
    Document document;
    Object object = document.newObject();
    Array array = document.newArray();
    Object element = document.newObject();
    element.setNamedValue(ORVEL_TEXT("n"), document.numberValue(1.5));
    array.append(element);
    array.append(document.stringValue(ORVEL_TEXT("")));
    object.setNamedValue(ORVEL_TEXT("z"), document.stringValue(ORVEL_TEXT("1")));
    object.setNamedValue(ORVEL_TEXT("a"), array);
    EXPECT_EQ(array.size(), 2U);
    EXPECT_EQ(object.stringify(), ORVEL_TEXT("{\"z\":\"1\",\"a\":[{\"n\":1.5},\"\"]}"));
}

TEST(JsonBuild, WritesIntegersWithoutAFraction) {
    Document document;
    EXPECT_EQ(document.numberValue(0).stringify(), ORVEL_TEXT("0"));
    EXPECT_EQ(document.numberValue(-2147483648.0).stringify(), ORVEL_TEXT("-2147483648"));
    EXPECT_EQ(document.numberValue(2147483647.0).stringify(), ORVEL_TEXT("2147483647"));
}

TEST(JsonBuild, TakesAnObjectThatWasSerialisedEarlier) {
    const WideString first = ORVEL_TEXT("{\"a\":\"\\u0001\"}");
    const WideString second = ORVEL_TEXT("{\"b\":2}");
    Document document;
    Array array = document.newArray();
    array.append(document.serialisedObject(first));
    array.append(document.stringValue(WideString(1, 1)));
    array.append(document.serialisedObject(second));
    Object object = document.newObject();
    object.setNamedValue(ORVEL_TEXT("data"), array);
    EXPECT_EQ(object.stringify(),
              ORVEL_TEXT("{\"data\":[{\"a\":\"\\u0001\"},\"\\u0001\",{\"b\":2}]}"));
}

TEST(JsonStringify, EscapesWhatMustBeEscaped) {
    Document document;
    const WideString text =
        WideString(ORVEL_TEXT("\"\\/")) + WideString(1, 0) + WideString(1, 0x1F);
    const WideString serialised = document.stringValue(text).stringify();
    EXPECT_TRUE(serialised.starts_with(ORVEL_TEXT("\"\\\"\\\\/\\u0000\\u001")))
        << PrintToString(serialised);
    Document again;
    EXPECT_EQ(again.parseObject(ORVEL_TEXT("{\"a\":") + serialised + ORVEL_TEXT("}"))
                  .getNamedString(ORVEL_TEXT("a")),
              text);
}

TEST(JsonStringify, KeepsEveryCharacter) {
    const WideString text = WideString(ORVEL_TEXT("aé漢\U0001F600\u2028\uFFFF")) +
                            WideString(1, 0) + ORVEL_TEXT("\u007F\u0080\u07FF\u0800\U0010FFFF");
    Document document;
    Object object = document.newObject();
    object.setNamedValue(text, document.stringValue(text));
    Document again;
    EXPECT_EQ(again.parseObject(object.stringify()).getNamedString(text), text);
}

}  // namespace
