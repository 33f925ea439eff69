/// What every backend of the JSON layer does alike, as far as the platforms' is documented.

#include "json/json.h"

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "json/raise.h"
#include "parsing.h"
#include "support/raised_status.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::TestSupport::raisedStatus;
using testing::PrintToString;
using namespace Orvel::Analytics::Json;

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
    for (const WideStringView text :
         {ORVEL_TEXT("{"), ORVEL_TEXT("{\"a\"}"), ORVEL_TEXT("{\"a\":1"), ORVEL_TEXT("{\"a\":1,}"),
          ORVEL_TEXT("{\"a\":[1,]}"), ORVEL_TEXT("{\"a\":1 \"b\":2}"), ORVEL_TEXT("{a:1}"),
          ORVEL_TEXT("{'a':1}"), ORVEL_TEXT("{\"a\":True}"), ORVEL_TEXT("{\"a\":\"\t\"}"),
          ORVEL_TEXT("{\"a\":\"\\u123\"}"), ORVEL_TEXT("{\"a\":\"\\x\"}"),
          ORVEL_TEXT("{\"a\":\"open}"), ORVEL_TEXT("{\"a\":NaN}"), ORVEL_TEXT("{\"a\":Infinity}"),
          ORVEL_TEXT("\v{}")}) {
        EXPECT_EQ(parseStatus(text), Status::kInvalidJsonString) << PrintToString(WideString(text));
    }
}

TEST(JsonParse, RefusesTextAfterTheValue) {
    for (const WideStringView text : {ORVEL_TEXT("{} {}"), ORVEL_TEXT("{}x"), ORVEL_TEXT("{},")}) {
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

TEST(JsonParse, RefusesUnpairedSurrogates) {
    const WideString open = ORVEL_TEXT("{\"a\":\"");
    const WideString close = ORVEL_TEXT("\"}");
    EXPECT_EQ(parseStatus(open + WideString(1, 0xD83D) + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + WideString(1, 0xDE00) + close), Status::kInvalidJsonString);
    EXPECT_EQ(parseStatus(open + WideString(1, 0xD83D) + WideString(1, 0xDE00) + close), 0U);
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
    for (const WideStringView text :
         {ORVEL_TEXT("{\"a\":1.7976931348623157e308}"), ORVEL_TEXT("{\"a\":-0}"),
          ORVEL_TEXT("{\"a\":2.2250738585072014e-308}"), ORVEL_TEXT("{\"a\":1E+2}")}) {
        EXPECT_EQ(parseStatus(text), 0U) << PrintToString(WideString(text));
    }
}

TEST(JsonParse, RefusesNestingWithoutEnd) {
    EXPECT_EQ(parseStatus(nested(1000)), 0U);
    EXPECT_NE(parseStatus(nested(100'000)), 0U);
}

TEST(JsonParse, KeepsTheLastOfEqualNames) {
    Document document;
    const Object object = document.parseObject(ORVEL_TEXT("{\"a\":1,\"b\":2,\"a\":3}"));
    EXPECT_EQ(object.size(), 2U);
    EXPECT_EQ(object.getView().lookup(ORVEL_TEXT("a"))->stringify(), ORVEL_TEXT("3"));
    EXPECT_EQ(object.getView().lookup(ORVEL_TEXT("b"))->stringify(), ORVEL_TEXT("2"));
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
    for (const WideStringView name : {ORVEL_TEXT(""), ORVEL_TEXT("other")}) {
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
        document.parseObject(ORVEL_TEXT("{\"s\":\"true\",\"n\":1,\"o\":{},\"a\":[]}"));
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedString(ORVEL_TEXT("n"))); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedBoolean(ORVEL_TEXT("n"))); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedObject(ORVEL_TEXT("n"))); }),
              Status::kIllegalMethodCall);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(object.getNamedArray(ORVEL_TEXT("n"))); }),
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

TEST(JsonRead, GivesElementsInAnyOrder) {
    Document document;
    Array array =
        document.parseObject(ORVEL_TEXT("{\"a\":[0,1,2,3]}")).getNamedArray(ORVEL_TEXT("a"));
    for (const std::uint32_t index : {3U, 0U, 2U, 2U, 1U, 3U}) {
        EXPECT_EQ(array.getAt(index).stringify(), Orvel::toWide(std::to_string(index)));
    }
    array.append(document.numberValue(4));
    EXPECT_EQ(array.getAt(4).stringify(), ORVEL_TEXT("4"));
}

TEST(JsonView, TellsPresenceWithoutFailing) {
    Document document;
    const Object object = document.parseObject(ORVEL_TEXT("{\"a\":1,\"z\":null}"));
    EXPECT_EQ(object.size(), 2U);
    const ObjectView view = object.getView();
    EXPECT_TRUE(view.hasKey(ORVEL_TEXT("a")));
    EXPECT_TRUE(view.hasKey(ORVEL_TEXT("z")));
    EXPECT_FALSE(view.hasKey(ORVEL_TEXT("other")));
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
    element.setNamedValue(ORVEL_TEXT("n"), document.numberValue(15));
    array.append(element);
    array.append(document.stringValue(ORVEL_TEXT("")));
    object.setNamedValue(ORVEL_TEXT("z"), document.stringValue(ORVEL_TEXT("1")));
    object.setNamedValue(ORVEL_TEXT("a"), array);
    EXPECT_EQ(array.size(), 2U);
    EXPECT_EQ(object.stringify(), ORVEL_TEXT("{\"z\":\"1\",\"a\":[{\"n\":15},\"\"]}"));
}

TEST(JsonBuild, WritesIntegersWithoutAFraction) {
    Document document;
    EXPECT_EQ(document.numberValue(0).stringify(), ORVEL_TEXT("0"));
    EXPECT_EQ(document.numberValue(-2147483648.0).stringify(), ORVEL_TEXT("-2147483648"));
    EXPECT_EQ(document.numberValue(2147483647.0).stringify(), ORVEL_TEXT("2147483647"));
}

TEST(JsonBuild, TakesAnObjectThatWasSerialisedEarlier) {
    Document earlier;
    Object first = earlier.newObject();
    first.setNamedValue(ORVEL_TEXT("a"), earlier.stringValue(WideString(1, 1)));
    const WideString firstText = first.stringify();
    const WideString secondText = ORVEL_TEXT("{\"b\":2}");
    Document document;
    Array array = document.newArray();
    array.append(document.serialisedObject(firstText));
    array.append(document.stringValue(ORVEL_TEXT("between")));
    array.append(document.serialisedObject(secondText));
    Object object = document.newObject();
    object.setNamedValue(ORVEL_TEXT("data"), array);
    EXPECT_EQ(object.stringify(),
              ORVEL_TEXT("{\"data\":[") + firstText + ORVEL_TEXT(",\"between\",{\"b\":2}]}"));
}

TEST(JsonBuild, TakesAListOfObjectsThatWereSerialisedEarlier) {
    const std::list<WideString> none;
    const std::list<WideString> one = {ORVEL_TEXT("{\"a\":1}")};
    const std::list<WideString> more = {ORVEL_TEXT("{\"a\":1}"), ORVEL_TEXT("{\"b\":[]}"),
                                        ORVEL_TEXT("{}")};
    const auto arrayOf = [](const std::list<WideString>& texts) {
        Document document;
        Array array = document.newArray();
        array.appendSerialised(texts);
        return array.stringify();
    };
    EXPECT_EQ(arrayOf(none), ORVEL_TEXT("[]"));
    EXPECT_EQ(arrayOf(one), ORVEL_TEXT("[{\"a\":1}]"));
    EXPECT_EQ(arrayOf(more), ORVEL_TEXT("[{\"a\":1},{\"b\":[]},{}]"));
}

TEST(JsonStringify, HasTheLengthThatIsToldBeforehand) {
    Document document;
    const Object object = document.parseObject(
        ORVEL_TEXT(
            "{\"text\":\"a \\\"b\\\" \\\\ \\n \\u0001 \u00e9 \u6f22 \U0001F600 and more of it\",")
            ORVEL_TEXT("\"number\":-12,\"none\":null,\"yes\":true,\"list\":[1,[],{}]}"));
    EXPECT_EQ(object.serialisedLength(), object.stringify().size());
    for (const WideString& name : {WideString(ORVEL_TEXT("text")), WideString(ORVEL_TEXT("number")),
                                   WideString(ORVEL_TEXT("none")), WideString(ORVEL_TEXT("yes")),
                                   WideString(ORVEL_TEXT("list"))}) {
        const auto value = object.getView().lookup(name);
        ASSERT_TRUE(value);
        EXPECT_EQ(value->serialisedLength(), value->stringify().size());
    }
}

TEST(JsonStringify, EscapesWhatMustBeEscaped) {
    Document document;
    const WideString text =
        WideString(ORVEL_TEXT("\"\\/")) + WideString(1, 0) + WideString(1, 0x1F);
    const WideString serialised = document.stringValue(text).stringify();
    EXPECT_TRUE(serialised.starts_with(ORVEL_TEXT("\"\\\"\\\\/\\"))) << PrintToString(serialised);
    for (const Orvel::WideChar unit : serialised) {
        EXPECT_GE(unit, 0x20) << "a control character must not stand there as it is";
    }
    Document again;
    EXPECT_EQ(again.parseObject(ORVEL_TEXT("{\"a\":") + serialised + ORVEL_TEXT("}"))
                  .getNamedString(ORVEL_TEXT("a")),
              text);
}

TEST(JsonStringify, KeepsEveryCharacter) {
    const WideString name = ORVEL_TEXT("aé漢\U0001F600");
    const WideString text = name + ORVEL_TEXT("\u2028\uFFFF") + WideString(1, 0) +
                            ORVEL_TEXT("\u007F\u0080\u07FF\u0800\U0010FFFF");
    Document document;
    Object object = document.newObject();
    object.setNamedValue(name, document.stringValue(text));
    Document again;
    EXPECT_EQ(again.parseObject(object.stringify()).getNamedString(name), text);
}

}  // namespace
