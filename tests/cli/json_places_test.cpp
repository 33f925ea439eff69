#include "cli/json_places.h"

#include <gmock/gmock.h>

namespace Orvel::Tool {
namespace {

using testing::HasSubstr;

/// The part of a text that is found at a path; "nothing" when there is none.
std::string valueAt(std::string_view text, const JsonPath& path) {
    const auto place = findInJson(text, path).value;
    return place ? std::string(text.substr(place->begin, place->end - place->begin)) : "nothing";
}

std::string nameAt(std::string_view text, const JsonPath& path) {
    const auto place = findInJson(text, path).name;
    return place ? std::string(text.substr(place->begin, place->end - place->begin)) : "nothing";
}

TEST(JsonPlaces, AValueIsFoundAsItIsWritten) {
    constexpr std::string_view kText =
        R"({ "text" : "a \"b\"" ,"number":-1.50e+2,"truth":true,"none":null,
             "list":[ 1 , [2,{"deep":[]}] ], "object": { "a":1 } })";
    EXPECT_EQ(valueAt(kText, {"text"}), R"("a \"b\"")");
    EXPECT_EQ(valueAt(kText, {"number"}), "-1.50e+2");
    EXPECT_EQ(valueAt(kText, {"truth"}), "true");
    EXPECT_EQ(valueAt(kText, {"none"}), "null");
    EXPECT_EQ(valueAt(kText, {"list"}), R"([ 1 , [2,{"deep":[]}] ])");
    EXPECT_EQ(valueAt(kText, {"list", "0"}), "1");
    EXPECT_EQ(valueAt(kText, {"list", "1", "0"}), "2");
    EXPECT_EQ(valueAt(kText, {"list", "1", "1", "deep"}), "[]");
    EXPECT_EQ(valueAt(kText, {"object"}), R"({ "a":1 })");
    EXPECT_EQ(valueAt(kText, {"object", "a"}), "1");
    EXPECT_EQ(valueAt(kText, {}), kText);
    EXPECT_EQ(valueAt(" [12] ", {"0"}), "12");
}

TEST(JsonPlaces, WhatIsNotThereIsNotFound) {
    constexpr std::string_view kText = R"({"a":{"b":1},"list":[1]})";
    EXPECT_EQ(valueAt(kText, {"b"}), "nothing");
    EXPECT_EQ(valueAt(kText, {"a", "b", "c"}), "nothing");
    EXPECT_EQ(valueAt(kText, {"list", "1"}), "nothing");
    EXPECT_EQ(valueAt(kText, {"list", "b"}), "nothing");
}

TEST(JsonPlaces, OfMembersOfOneNameTheLastCounts) {
    EXPECT_EQ(valueAt(R"({"a":1,"b":2,"\u0061":3})", {"a"}), "3");
}

TEST(JsonPlaces, ANameIsFoundWithItsQuotes) {
    EXPECT_EQ(nameAt(R"({"a":1, "\u0062" :{"c":2}})", {"b"}), R"("\u0062")");
    EXPECT_EQ(nameAt(R"({"a":1,"b":{"c":2}})", {"b", "c"}), R"("c")");
    EXPECT_EQ(nameAt("[1]", {"0"}), "nothing");
}

TEST(JsonPlaces, AByteOrderMarkIsNoPartOfAnything) {
    const std::string text = "\xEF\xBB\xBF{\"a\":1}";
    EXPECT_EQ(valueAt(text, {"a"}), "1");
    EXPECT_EQ(valueAt(text, {}), "{\"a\":1}");
    EXPECT_EQ(lineAndColumn(text, 3), "1:1");
}

TEST(JsonPlaces, ColumnsAreCountedInCharactersAndLinesByTheirEnds) {
    EXPECT_EQ(lineAndColumn("", 0), "1:1");
    EXPECT_EQ(lineAndColumn("abc", 2), "1:3");
    EXPECT_EQ(lineAndColumn("a\nb\n\ncd", 6), "4:2");
    EXPECT_EQ(lineAndColumn("\xC3\xA9\xE6\xBC\xA2x", 5), "1:3") << "after é and 漢";
    EXPECT_EQ(lineAndColumn("ab", 99), "1:3") << "the end, when there is no such byte";
}

TEST(JsonPlaces, TheFaultOfATextIsWhereItStopsBeingJson) {
    EXPECT_FALSE(faultOfJson(R"({"a":[1,{}]})"));
    const auto fault = faultOfJson(R"({"a":x})");
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->byte, 5U);
    EXPECT_THAT(fault->reason, HasSubstr("syntax error"));
    const auto early = faultOfJson(R"({"a":)");
    ASSERT_TRUE(early);
    EXPECT_EQ(early->byte, 5U) << "the end";
    EXPECT_TRUE(faultOfJson(""));
    const auto null = faultOfJson(std::string_view("{}\0x", 4));
    ASSERT_TRUE(null);
    EXPECT_EQ(null->byte, 2U);
}

TEST(JsonPlaces, DeepNestingIsFollowedWithoutDepth) {
    const std::string text = std::string(1'000'000, '[') + std::string(1'000'000, ']');
    EXPECT_FALSE(faultOfJson(text));
    EXPECT_EQ(valueAt(text, {"0", "0", "1"}), "nothing");
}

}  // namespace
}  // namespace Orvel::Tool
