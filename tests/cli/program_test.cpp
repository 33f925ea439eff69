/// The tool as a process, against the real service.

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/service_process.h"

namespace Orvel::Tool {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kTool = ORVEL_TOOL_PROGRAM;

constexpr const char* kDataClass = R"json({"name":"Note","id":"note","version":"1.0","fields":[
    {"id":"text","name":"Text","nullable":"true","type":"varchar(200)"},
    {"id":"count","name":"Count","nullable":"true","type":"integer"},
    {"id":"needed","name":"Needed","nullable":"false","type":"boolean"}]})json";

class ProgramTest : public testing::Test {
  protected:
    std::string write(const std::string& name, const std::string& content) const {
        const auto path = folder.path() / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    Support::Process::Output report(std::vector<std::string> arguments) const {
        std::vector<std::string> all{"report",
                                     "--app",
                                     "tool-test",
                                     "--app-version",
                                     "1",
                                     "--data-class",
                                     write("class.json", kDataClass)};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return Support::runProgram(kTool, all, environment());
    }

    /// Runs a line of shell in which "$tool" is the tool.
    Support::Process::Output shell(const std::string& line) const {
        auto variables = environment();
        variables.push_back(std::string("tool=") + kTool);
        variables.push_back("folder=" + folder.path().string());
        return Support::runProgram("/bin/sh", {"-c", line}, variables);
    }

    std::vector<std::string> environment() const {
        return {"ORVEL_RPC_DIRECTORY=" + service.endpointFolder().string()};
    }

    std::vector<json> stored() const {
        std::vector<json> events;
        std::istringstream lines(service.run({"events", "--good", "--json"}).out);
        for (std::string line; std::getline(lines, line);) {
            events.push_back(json::parse(line));
        }
        return events;
    }

    Support::TemporaryFolder folder;
    Support::ServiceProcess service{ORVEL_SERVICE_PROGRAM};
};

TEST_F(ProgramTest, WhatIsStoredIsWhatWasReported) {
    const std::vector<std::string> lines{
        R"({"needed":true,"text":"plain"})",
        R"({"needed":true,"text":"漢字 and 📝"})",
        R"({"needed":true,"text":"quote \" backslash \\ tab \t control \u0001 nul \u0000 slash \/"})",
        R"({"needed":false,"count":-2147483648,"other":12345678901234567890})",
        R"({"needed":false,"text":null,"nested":{"a":[1,{"b":null}]}})",
    };
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    service.start();
    const auto result = report({write("events.jsonl", text)});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("5 events: 5 accepted, 0 refused; 1 batch sent"));

    const std::vector<json> events = stored();
    ASSERT_EQ(events.size(), lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        json values = events[i].at("values");
        values.erase("DT");
        values.erase("V");
        EXPECT_EQ(values, json::parse(lines[i])) << lines[i];
        EXPECT_EQ(events[i].at("application"), "tool-test");
        EXPECT_EQ(events[i].at("class"), "note");
    }
}

TEST_F(ProgramTest, TheTimeOfAnEventIsTheOneThatItHolds) {
    service.start();
    const auto result =
        report({"--time-member", "at",
                write("events.jsonl", R"({"needed":true,"at":"2024-01-31 23:59:58"})")});
    EXPECT_EQ(result.status, 0) << result.error;
    ASSERT_EQ(stored().size(), 1U);
    EXPECT_EQ(stored()[0].at("time"), "20240131T235958");
}

TEST_F(ProgramTest, WhatTheServiceRefusesIsToldWithItsLines) {
    service.start();
    const auto result =
        report({"--batch", "2",
                write("events.jsonl", "{\"needed\":true}\n{\"text\":\"x\"}\n{\"needed\":true}\n")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("lines 1 to 2: the batch of 2 events was not accepted as a "
                                        "whole: DataclassNotFollowRegisteredFormat (17)"));
    EXPECT_EQ(stored().size(), 2U) << "the service keeps the good events of such a batch";
}

TEST_F(ProgramTest, NobodyListeningIsStatus3) {
    const auto result = report({write("events.jsonl", "{\"needed\":true}\n")});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.error, HasSubstr("(status 1722)"));
}

TEST_F(ProgramTest, EventsComeThroughAPipe) {
    service.start();
    write("class.json", kDataClass);
    const auto result = shell(
        "printf '{\"needed\":true}\\n{\"needed\":false}' | \"$tool\" report --app a --app-version "
        "1 "
        "--data-class \"$folder/class.json\" --json -");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(json::parse(result.out).at("accepted"), 2);
}

TEST_F(ProgramTest, AClosedStandardInputIsAnEmptyOne) {
    service.start();
    write("class.json", kDataClass);
    const auto result =
        shell("\"$tool\" report --app a --app-version 1 --data-class \"$folder/class.json\" - <&-");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("0 events"));
}

TEST_F(ProgramTest, AFullDiskIsStatus4ButNoEventIsLost) {
    service.start();
    write("class.json", kDataClass);
    write("events.jsonl", "{\"needed\":true}\n");
    const auto result = shell(
        "\"$tool\" report --app a --app-version 1 --data-class \"$folder/class.json\" "
        "\"$folder/events.jsonl\" >/dev/full");
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error,
                HasSubstr("cannot write to standard output: No space left on device"));
    EXPECT_EQ(stored().size(), 1U);
}

TEST_F(ProgramTest, AClosedStandardOutputIsStatus4AndNothingElseTakesItsPlace) {
    service.start();
    write("class.json", kDataClass);
    write("events.jsonl", "{\"needed\":true}\n");
    const auto result = shell(
        "\"$tool\" report --app a --app-version 1 --data-class \"$folder/class.json\" "
        "\"$folder/events.jsonl\" >&-");
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("cannot write to standard output"));
    EXPECT_EQ(stored().size(), 1U);
}

TEST_F(ProgramTest, AReaderThatWentAwayIsStatus4AndNoSignal) {
    // The pipe is opened for reading and writing, then for writing, and then has no reader left.
    const auto result = shell(
        "mkfifo \"$folder/pipe\" && exec 3<>\"$folder/pipe\" 4>\"$folder/pipe\" 3<&- && "
        "\"$tool\" --help >&4");
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("cannot write to standard output"));
}

TEST_F(ProgramTest, AClosedStandardErrorDoesNotEndTheRun) {
    service.start();
    write("class.json", kDataClass);
    write("events.jsonl", "[]\n{\"needed\":true}\n");
    const auto result = shell(
        "\"$tool\" report --app a --app-version 1 --data-class \"$folder/class.json\" "
        "\"$folder/events.jsonl\" 2>&-");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(stored().size(), 1U);
}

TEST_F(ProgramTest, HelpAndVersionNeedNoService) {
    EXPECT_EQ(Support::runProgram(kTool, {"--help"}).status, 0);
    EXPECT_EQ(Support::runProgram(kTool, {"--version"}).status, 0);
    const auto wrong = Support::runProgram(kTool, {"report"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_THAT(wrong.out, IsEmpty());
}

}  // namespace
}  // namespace Orvel::Tool
