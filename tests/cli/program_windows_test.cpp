/// The tool as a process that has a service of its own inside.

#include "support/program_windows.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace Orvel::Tool {
namespace {

using Support::Program;
using Support::ProgramOutcome;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class WindowsProgramTest : public testing::Test {
  protected:
    using Arguments = std::vector<std::wstring>;

    static ProgramOutcome tool(Arguments arguments) {
        return Support::run({ORVEL_TOOL_PROGRAM, std::move(arguments)});
    }

    std::wstring write(const std::wstring& name, const std::string& content) const {
        const auto path = folder.path() / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.wstring();
    }

    /// `report` of a class with an integer, of events that still are to be named.
    Program report(const Arguments& more) const {
        const auto file = write(L"class \u6F22.json", R"json({"name":"n","id":"c\u6f22",
            "version":"1","fields":[{"id":"a","name":"A","nullable":"true","type":"integer"}]})json");
        Program program{ORVEL_TOOL_PROGRAM,
                        {L"report", L"--app", L"a", L"--app-version", L"1", L"--data-class", file}};
        program.arguments.insert(program.arguments.end(), more.begin(), more.end());
        return program;
    }

    Support::TemporaryFolder folder;
};

TEST_F(WindowsProgramTest, ConsentIsShownLineByLine) {
    const ProgramOutcome result = tool({L"consent", L"get"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.error, IsEmpty());
    EXPECT_EQ(result.out,
              "marketing             accepted\n"
              "support               rejected\n"
              "product enhancement   unknown\n"
              "recorded              20260131T235959\n"
              "source                orvel-analytics\n"
              "data processing       allowed\n"
              "managed device        no\n"
              "device serial number  SN-1\n"
              "country               PT\n"
              "tenant                tenant\n"
              "privacy statement     https://example.com/privacy\n"
              "warranty              https://example.com/warranty\n"
              "telemetry statement   https://example.com/telemetry\n");
}

TEST_F(WindowsProgramTest, ConsentIsChangedAndShownAsJson) {
    const ProgramOutcome result =
        tool({L"consent", L"set", L"--marketing", L"rejected", L"--json"});
    EXPECT_EQ(result.status, 0) << result.error;
    const auto object = nlohmann::json::parse(result.out);
    EXPECT_EQ(object.at("changed"), true);
    EXPECT_EQ(object.at("consent").at("country_code"), "PT");
}

TEST_F(WindowsProgramTest, EventsOfAFileAreReported) {
    const ProgramOutcome result = run(report({write(L"\u00E9.jsonl", "{\"a\":1}\n{\"a\":2}\n")}));
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out,
              "registered data class \"c\xE6\xBC\xA2\", version \"1\", with 1 fields\n"
              "2 events: 2 accepted, 0 refused; 1 batch sent\n");
}

TEST_F(WindowsProgramTest, EventsComeThroughAPipeByteForByte) {
    Program program = report({L"--json", L"-"});
    program.input = "{\"a\":1}\r\n{\"t\":\"\x1A\"}\n{\"a\":2}";
    const ProgramOutcome result = run(program);
    EXPECT_EQ(result.status, 1);
    const auto summary = nlohmann::json::parse(result.out);
    EXPECT_EQ(summary.at("accepted"), 2);
    EXPECT_EQ(summary.at("refused_lines").at(0).at("line"), 2);
    EXPECT_THAT(result.error, HasSubstr("-: line 2: refused: MalformedJson (15): "));
}

TEST_F(WindowsProgramTest, WrongUsageIsStatus2) {
    const ProgramOutcome result = tool({L"report"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr("--app is required"));
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_EQ(run(report({L"/no such file"})).status, 2) << "a slash begins no option";
}

TEST_F(WindowsProgramTest, ArgumentsAreTextOfAnyScriptAndNoPatterns) {
    const ProgramOutcome result =
        tool({L"consent", L"get", L"--app", L"* \u00E9\u6F22\U0001F4DD ?"});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out,
                HasSubstr("source                * \xC3\xA9\xE6\xBC\xA2\xF0\x9F\x93\x9D ?\n"));
}

TEST_F(WindowsProgramTest, AnArgumentThatIsNoTextIsWrongUsage) {
    const std::wstring half = L"a\xD83Dz";
    const ProgramOutcome result = tool({L"consent", L"get", L"--app", half});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.error, HasSubstr("--app: "));
    EXPECT_THAT(run(report({half})).error, HasSubstr("a\\xffz: no file has such a name"));
}

TEST_F(WindowsProgramTest, AClosedStandardInputIsAnEmptyOne) {
    Program program = report({L"-"});
    program.input = std::nullopt;
    const ProgramOutcome result = run(program);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("0 events"));
}

TEST_F(WindowsProgramTest, AnOutputThatCannotBeWrittenIsStatus4) {
    for (const auto stream : {Program::Stream::Closed, Program::Stream::WithoutReader}) {
        Program program{ORVEL_TOOL_PROGRAM, {L"consent", L"get"}};
        program.out = stream;
        const ProgramOutcome result = run(program);
        EXPECT_EQ(result.status, 4);
        EXPECT_THAT(result.error, StartsWith("orvel-analytics: cannot write to standard output"));
    }
}

TEST_F(WindowsProgramTest, AClosedStandardErrorDoesNotEndTheRun) {
    Program program = report({write(L"events.jsonl", "[]\n{\"a\":1}\n")});
    program.error = Program::Stream::Closed;
    const ProgramOutcome result = run(program);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("2 events: 1 accepted, 1 refused"));
}

}  // namespace
}  // namespace Orvel::Tool
