#include "service/json.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "service/error_name.h"
#include "service/json_path.h"
#include "service/json_text.h"

namespace Orvel::Service {
namespace {

using namespace std::string_literals;

bool isObject(const std::string& text) {
    try {
        JsonDocument::parseObject(text);
        return true;
    } catch (const Refusal& refusal) {
        EXPECT_EQ(refusal.name(), ErrorNames::kMalformedJson);
        return false;
    }
}

std::size_t compactLength(const std::string& value) {
    const std::string text = R"({"v":)" + value + "}";
    return JsonDocument::parseObject(text).root().member("v").value.compactLength();
}

TEST(JsonTest, AcceptsOneObjectAndNothingElse) {
    EXPECT_TRUE(isObject("{}"));
    EXPECT_TRUE(isObject(" {\"a\" : [1, {}] }\n"));
    for (const std::string text :
         {"", " ", "[]", "1", "\"{}\"", "null", "{", "{}x", "{} {}", "{\"a\":1,}", "{\"a\":01}",
          "{'a':1}", "{\"a\":NaN}", "/**/{}", "\xEF\xBB\xBF{}", "{\"a\":\"\n\"}",
          "{\"a\":\"\\ud800\"}", "{\"a\":\"\xFF\"}"}) {
        EXPECT_FALSE(isObject(text)) << text;
    }
}

TEST(JsonTest, ReadsAsManyLevelsAsItSays) {
    const auto nested = [](std::size_t levels) {
        return R"({"a":)" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
    };
    EXPECT_TRUE(isObject(nested(kDeepestJson)));
    EXPECT_FALSE(isObject(nested(kDeepestJson + 1)));
    EXPECT_FALSE(isObject(std::string(1'000'000, '[')));
}

TEST(JsonTest, CountsLevelsAmongManyValues) {
    std::string numbers = "0";
    for (int count = 0; count < 5000; ++count) {
        numbers += ",0";
    }
    const auto wideAndDeep = [&numbers](std::size_t levels) {
        const std::string deep = std::string(levels - 2, '[') + std::string(levels - 2, ']');
        return R"({"wide":[)" + numbers + R"(],"both":[)" + numbers + "," + deep + "]}";
    };
    EXPECT_TRUE(isObject(wideAndDeep(kDeepestJson)));
    EXPECT_FALSE(isObject(wideAndDeep(kDeepestJson + 1)));
}

TEST(JsonTest, BracketsInStringsAreNoLevels) {
    EXPECT_TRUE(
        isObject(R"({"a":")" + std::string(5000, '[') + R"(\")" + std::string(5000, '{') + "\"}"));
}

TEST(JsonTest, LastOfTwoEqualNamesCounts) {
    const JsonDocument document = JsonDocument::parseObject(R"({"a":1,"b":2,"\u0061":3})");
    const auto member = document.root().member("a");
    EXPECT_EQ(member.value.number(), "3");
    EXPECT_EQ(member.index, 2U);
}

TEST(JsonTest, NumbersKeepEveryDigit) {
    const std::string digits = "-123456789012345678901234567890.50e+0100";
    const JsonDocument document = JsonDocument::parseObject(R"({"a":)" + digits + "}");
    EXPECT_EQ(document.root().member("a").value.number(), digits);
}

TEST(JsonTest, StringsKeepNulCharacters) {
    const JsonDocument document = JsonDocument::parseObject(R"({"a":"x\u0000y"})");
    EXPECT_EQ(document.root().member("a").value.string(), "x\0y"s);
}

TEST(JsonTest, CompactLengthIsThatOfTheRewrittenText) {
    EXPECT_EQ(compactLength(R"("")"), 2U);
    EXPECT_EQ(compactLength(R"("abc")"), 5U);
    EXPECT_EQ(compactLength(R"("\/\u0041")"), 4U);
    EXPECT_EQ(compactLength(R"("\"\\\b\f\n\r\t")"), 16U);
    EXPECT_EQ(compactLength(R"("\u0001")"), 8U);
    EXPECT_EQ(compactLength(R"("\u0000")"), 8U);
    EXPECT_EQ(compactLength("\"\u007F\u0080\u00E9\u4E2D\uFFFF\""), 7U);
    EXPECT_EQ(compactLength("\"\U0001F600\""), 4U);
    EXPECT_EQ(compactLength(R"("\ud83d\ude00")"), 4U);
    EXPECT_EQ(compactLength("12345"), 5U);
    EXPECT_EQ(compactLength("true"), 4U);
    EXPECT_EQ(compactLength("false"), 5U);
    EXPECT_EQ(compactLength("null"), 4U);
    EXPECT_EQ(compactLength("[ ]"), 2U);
    EXPECT_EQ(compactLength("[ 1 ]"), 3U);
    EXPECT_EQ(compactLength("[ 1 , 22 , \"x\" ]"), 10U);
    EXPECT_EQ(compactLength("{ }"), 2U);
    EXPECT_EQ(compactLength(R"({ "a" : 1 , "b" : [ ] })"), 14U);
    EXPECT_EQ(compactLength(R"({"a":12345,"\u0061":1})"), 7U);
}

TEST(JsonTest, CompactLengthCountsEveryCharacterWhereverItStands) {
    struct Written {
        std::string text;
        std::size_t units;
    };
    const std::vector<Written> characters = {
        {"a", 1},     {"~", 1},         {"\u007F", 1}, {R"(\")", 2},  {R"(\\)", 2},
        {R"(\n)", 2}, {R"(\u0001)", 6}, {"\u00E9", 1}, {"\u4E2D", 1}, {"\U0001F600", 2}};
    for (const Written& character : characters) {
        for (std::size_t length = 0; length < 40; ++length) {
            for (std::size_t before = 0; before <= length; ++before) {
                const std::string value = '"' + std::string(before, 'x') + character.text +
                                          std::string(length - before, 'y') + '"';
                ASSERT_EQ(compactLength(value), length + character.units + 2) << value;
            }
        }
    }
}

TEST(JsonTest, CursorFindsTheVeryCharactersOfElements) {
    const std::string text =
        R"( { "x" : "\"]" , "list" : [ 1 , "a\\" ,{ "k" : [ "}" ] } , -2.5e3, [ ],null ] } )";
    JsonCursor cursor(text);
    cursor.enterMember(1);
    cursor.enterArray();
    EXPECT_EQ(cursor.takeElement(), "1");
    EXPECT_EQ(cursor.takeElement(), R"("a\\")");
    EXPECT_EQ(cursor.takeElement(), R"({ "k" : [ "}" ] })");
    EXPECT_EQ(cursor.takeElement(), "-2.5e3");
    EXPECT_EQ(cursor.takeElement(), "[ ]");
    EXPECT_EQ(cursor.takeElement(), "null");
}

TEST(JsonTest, CursorEntersAMemberBehindValuesOfEveryKind) {
    const std::string text = R"({"a":1,"b":"x","c":{"d":[]},"e":true ,"f":[9]})";
    JsonCursor cursor(text);
    cursor.enterMember(4);
    cursor.enterArray();
    EXPECT_EQ(cursor.takeElement(), "9");
}

TEST(JsonTest, CursorGoesOnFromAStringInAnElement) {
    const std::string first = R"({ "k" : "}" , "a\"\u0062" : { "x":["]",1] , "l\\" : [{}] } })";
    const std::string second = R"({"k":{"b":"\\"}})";
    const std::string text = R"({"\u006cist":[ )" + first + " , " + second + " ,3]}";
    const JsonDocument document = JsonDocument::parseObject(text);
    JsonCursor cursor(text);
    cursor.enterMember(0);
    cursor.enterArray();
    std::vector<JsonValue> elements;
    document.root().member("list").value.forEachElement(
        [&elements](JsonValue element) { elements.push_back(element); });
    const auto placeOfLastName = [&](JsonValue object) {
        return document.placeOf(object.lastName().value());
    };
    EXPECT_EQ(cursor.takeElement(placeOfLastName(elements[0].member("a\"b").value), 2), first);
    EXPECT_EQ(cursor.takeElement(placeOfLastName(elements[1]), 1), second);
    EXPECT_EQ(cursor.takeElement(), "3");
}

TEST(JsonTest, OnlyAnObjectWithMembersHasALastName) {
    const JsonDocument document =
        JsonDocument::parseObject(R"({"none":{},"list":["a"],"one":{"\u0000":1,"a":2,"b":{}}})");
    EXPECT_EQ(document.root().member("none").value.lastName(), std::nullopt);
    EXPECT_EQ(document.root().member("list").value.lastName(), std::nullopt);
    EXPECT_EQ(document.root().member("one").value.lastName(), "b");
    EXPECT_EQ(document.root().lastName(), "one");
}

TEST(JsonTest, StringsAreWrittenWithOnlyTheEscapesThatMustBe) {
    std::string out;
    appendJsonString(out, "a\"\\/\n\x01\u4E2D\0z"s);
    EXPECT_EQ(out, "\"a\\\"\\\\/\\n\\u0001\u4E2D\\u0000z\"");
}

TEST(JsonTest, PathNamesWhatIsNoPlainNameInQuotes) {
    std::string path = "$";
    appendPathMember(path, "Evt_1");
    appendPathMember(path, "1st");
    appendPathMember(path, "");
    appendPathMember(path, "a'b\"\\\n\u4E2D");
    EXPECT_EQ(path, "$.Evt_1['1st']['']['a\\'b\"\\\\\\n\u4E2D']");
}

TEST(JsonTest, PathHasTheBeginningOfALongName) {
    const auto pathOf = [](const std::string& name) {
        std::string path;
        appendPathMember(path, name);
        return path;
    };
    EXPECT_EQ(pathOf(std::string(256, 'a')), "." + std::string(256, 'a'));
    EXPECT_EQ(pathOf(std::string(257, 'a')), "['" + std::string(256, 'a') + "\u2026']");
    EXPECT_EQ(pathOf(std::string(255, 'a') + "\u4E2D"), "['" + std::string(255, 'a') + "\u2026']");
    EXPECT_EQ(pathOf(std::string(253, 'a') + "\u4E2D\u4E2D"),
              "['" + std::string(253, 'a') + "\u4E2D\u2026']");
    // NOLINTNEXTLINE(bugprone-string-constructor): as long as it looks.
    EXPECT_LT(pathOf(std::string(10'000'000, '\'')).size(), 600U);
}

}  // namespace
}  // namespace Orvel::Service
