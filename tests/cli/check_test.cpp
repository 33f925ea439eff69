#include "cli/check.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cli/tool_fixture.h"

namespace Orvel::Tool {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class CheckTest : public ToolTest {
  protected:
    ToolRun check(const std::string& events, std::vector<std::string> arguments = {},
                  std::string_view dataClass = kDataClass) {
        arguments.insert(arguments.begin(),
                         {"check", "--data-class", write("class.json", dataClass)});
        ToolRun result = run(std::move(arguments), events);
        EXPECT_THAT(script.endpoints, IsEmpty()) << "the service is asked for nothing";
        return result;
    }
};

TEST_F(CheckTest, GoodEventsAreCountedAndTheServiceIsNotAsked) {
    const ToolRun result = check("{\"text\":\"a\"}\n\n{\"count\":2}\n{\"other\":null}\n");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "3 events: 3 accepted, 0 refused\n");
    EXPECT_THAT(result.err, IsEmpty());
}

TEST_F(CheckTest, AFieldAtFaultIsNamedWithItsTypeItsValueAndItsPlace) {
    const ToolRun result = check(
        "{\"text\":\"longer\"}\n"
        "{\"text\":\"a\", \"count\": \"12\"}\n"
        "{\"count\":2147483648}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "3 events: 0 accepted, 3 refused\n");
    EXPECT_EQ(result.err,
              "-: line 1: refused: FieldValueTooLong (29): the value of a text field is longer "
              "than the field allows; field \"text\" of type varchar(5) has \"longer\", at 1:9\n"
              "-: line 2: refused: GenericError (1): the value of an integer field is not a "
              "number of 32 bits; field \"count\" of type integer has \"12\", at 2:23\n"
              "-: line 3: refused: GenericError (1): the value of an integer field is not a "
              "number of 32 bits; field \"count\" of type integer has 2147483648, at 3:10\n");
}

TEST_F(CheckTest, TheFieldIsTheFirstOfTheDataClassAndNotOfTheEvent) {
    const ToolRun result = check("{\"count\":null,\"text\":\"longer\"}\n");
    EXPECT_THAT(result.err, HasSubstr("field \"text\" of type varchar(5) has \"longer\", at 1:22"));
}

TEST_F(CheckTest, AVarcharWithoutALengthIsHeldToThatOfTheFieldBeforeIt) {
    constexpr std::string_view kInherits = R"json({"name":"","id":"c","version":"1","fields":[
        {"id":"a","name":"","nullable":"true","type":"varchar(3)"},
        {"id":"b","name":"","nullable":"true","type":"varchar"}]})json";
    EXPECT_EQ(check("{\"b\":\"long\"}\n", {}, kInherits).status, 0);
    EXPECT_THAT(check("{\"a\":\"abc\",\"b\":\"long\"}\n", {}, kInherits).err,
                HasSubstr("field \"b\" of type varchar has \"long\""));
}

TEST_F(CheckTest, EveryFieldIsFoundWhereverItStands) {
    constexpr std::size_t kFields = 9;
    json dataClass{{"name", ""}, {"id", "c"}, {"version", "1"}, {"fields", json::array()}};
    for (std::size_t i = 0; i < kFields; ++i) {
        dataClass["fields"].push_back({{"id", "f" + std::to_string(i)},
                                       {"name", ""},
                                       {"nullable", "true"},
                                       {"type", "integer"}});
    }
    for (std::size_t i = 0; i < kFields; ++i) {
        json event;
        for (std::size_t j = 0; j < kFields; ++j) {
            event["f" + std::to_string(j)] = j < i ? json(1) : json("x");
        }
        EXPECT_THAT(check(event.dump() + "\n", {}, dataClass.dump()).err,
                    HasSubstr("; field \"f" + std::to_string(i) + "\" of type integer has \"x\""));
    }
}

TEST_F(CheckTest, WhatIsNoJsonIsToldWithItsPlace) {
    const ToolRun result = check("{\"text\":\"a\"}\n{\"\xC3\xA9\":1,}\n");
    EXPECT_THAT(result.err,
                HasSubstr("-: line 2: refused: MalformedJson (15): not JSON: syntax error"));
    EXPECT_THAT(result.err, EndsWith(", at 2:8\n"));
}

TEST_F(CheckTest, JsonThatIsNoEventHasNoPlace) {
    const std::string refused = "MalformedJson (15): not a JSON object with members\n";
    EXPECT_EQ(check("[1]\n").err, "-: line 1: refused: " + refused);
    EXPECT_EQ(check("{}\n").err, "-: line 1: refused: " + refused);
}

TEST_F(CheckTest, TextThatIsNoUtf8IsRefused) {
    const ToolRun result = check("{\"text\":\"\xFF\"}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("-: line 1: refused: "));
}

TEST_F(CheckTest, AnUnusableLengthIsTheFaultOfItsField) {
    constexpr std::string_view kHuge = R"json({"name":"","id":"c","version":"1","fields":[
        {"id":"a","name":"","nullable":"true","type":"integer"},
        {"id":"b","name":"","nullable":"true","type":"varchar(99999999999)"}]})json";
    const ToolRun result = check("{\"a\":1,\"b\":\"x\"}\n", {}, kHuge);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("is not within 32 bits"));
    EXPECT_THAT(result.err, HasSubstr("; field \"b\" of type varchar(99999999999) has \"x\""));
}

TEST_F(CheckTest, ALongValueIsShortenedBetweenTwoCharacters) {
    std::string value;
    for (int i = 0; i < 60; ++i) {
        value += "\xC3\xA9";
    }
    const ToolRun result = check("{\"text\":\"" + value + "\"}\n");
    EXPECT_THAT(result.err, HasSubstr("has \"" + value.substr(0, 98) + "..., at 1:9"));
}

TEST_F(CheckTest, NothingInAValueSteersATerminal) {
    EXPECT_THAT(check("{\"text\":\"a\u009b\u202e\x7f longer\"}\n").err,
                HasSubstr("has \"a\\u009b\\u202e\\x7f longer\""));
}

TEST_F(CheckTest, AnEventMayHaveToHaveATime) {
    const std::string events = "{\"at\":\"2024-01-31 23:59:58\"}\n{\"count\":\"x\"}\n";
    EXPECT_THAT(check(events, {"--time-member", "at"}).err,
                HasSubstr("line 2: refused: the event has no member \"at\""));
}

TEST_F(CheckTest, TheSummaryForProgramsNamesFieldTypeValueAndColumn) {
    const ToolRun result = check("{\"text\":\"longer\"}\n{\"count\":1}\n[]\n", {"--json"});
    EXPECT_EQ(json::parse(result.out), json::parse(R"json({
        "lines":3,"accepted":1,"refused":2,"refused_lines":[
            {"line":1,"result":"FieldValueTooLong","code":29,
             "reason":"the value of a text field is longer than the field allows",
             "field":"text","type":"varchar(5)","value":"\"longer\"","column":9},
            {"line":3,"result":"MalformedJson","code":15,
             "reason":"not a JSON object with members",
             "field":null,"type":null,"value":null,"column":null}],
        "refused_lines_omitted":0,"exit_status":1,"error":null})json"));
}

TEST_F(CheckTest, WrongUsageIsToldAndNothingElse) {
    const ToolRun result = run({"check", "--data-class", missing()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.out, IsEmpty());
    const ToolRun program = run({"check", "--json", "--data-class", write("c.json", "{}")});
    EXPECT_EQ(program.status, 2);
    EXPECT_THAT(json::parse(program.out).at("error").get<std::string>(),
                HasSubstr("c.json:1:1: member \"name\" is missing"));
}

TEST_F(CheckTest, AReportNamesTheSameField) {
    const ToolRun result = runReport({}, "{\"text\":\"longer\"}\n{\"text\":\"short\"}\n");
    EXPECT_THAT(result.err,
                HasSubstr("; field \"text\" of type varchar(5) has \"longer\", at 1:9"));
    EXPECT_THAT(result.out, HasSubstr("2 events: 1 accepted, 1 refused; 1 batch sent"));
}

}  // namespace
}  // namespace Orvel::Tool
