#include <gmock/gmock.h>

#include <regex>

#include "cli/tool_fixture.h"

namespace Orvel::Tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST_F(ToolTest, HelpBeginsWithAnExample) {
    const ToolRun result = run({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith("Example:\n  orvel-analytics report "));
    EXPECT_THAT(result.err, IsEmpty());
}

TEST_F(ToolTest, HelpListsEachCommandOnOneLine) {
    EXPECT_THAT(run({"--help"}).out,
                testing::ContainsRegex("\n  report  +Send the events of a file to the service\n"
                                       "  check  +Check the events of a file without a service\n"
                                       "  generate  +Write C\\+\\+ classes for data classes and "
                                       "their events\n"
                                       "  consent  +Show or change the user's consent\n"
                                       "  documents  +Show the addresses of the privacy "
                                       "documents\n"));
    EXPECT_THAT(run({"consent", "--help"}).out,
                testing::ContainsRegex("\n  get  +Show the consent record\n"
                                       "  set  +Change the answers for some purposes\n"));
}

TEST_F(ToolTest, HelpOfReportBeginsWithAnExampleAndNamesEveryOption) {
    const ToolRun result = run({"report", "--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith("Example:\n  orvel-analytics report "));
    for (const char* option : {"--app ", "--app-version", "--user", "--data-class", "--time-member",
                               "--batch", "--json", "EVENTS", "Exit status"}) {
        EXPECT_THAT(result.out, HasSubstr(option));
    }
}

TEST_F(ToolTest, HelpOfCheckAndGenerateBeginsWithAnExampleAndNamesEveryOption) {
    const std::vector<std::string> check = {"check", "--data-class", "--time-member", "--json",
                                            "EVENTS"};
    const std::vector<std::string> generate = {"generate", "--data-class", "--output",
                                               "--namespace"};
    for (const std::vector<std::string>& words : {check, generate}) {
        const ToolRun result = run({words.front(), "--help"});
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.out, StartsWith("Example:\n  orvel-analytics " + words.front()));
        EXPECT_THAT(result.out, HasSubstr("Exit status"));
        for (const std::string& option : words) {
            EXPECT_THAT(result.out, HasSubstr(option));
        }
    }
}

TEST_F(ToolTest, HelpOfEveryConsentCommandBeginsWithAnExampleAndNamesItsOptions) {
    const std::vector<std::string> common = {"--app ", "--app-version", "--json", "Exit status"};
    const std::vector<std::string> purposes = {"--marketing", "--support", "--product-enhancement",
                                               "{accepted,rejected,unknown}"};
    EXPECT_THAT(run({"consent", "--help"}).out, AllOf(HasSubstr("get"), HasSubstr("set")));
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"consent", "get"}, {"consent", "set"}, {"documents"}}) {
        auto arguments = command;
        arguments.emplace_back("--help");
        const ToolRun result = run(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.out, StartsWith("Example:\n  orvel-analytics " + command.front()));
        for (const std::string& option : common) {
            EXPECT_THAT(result.out, HasSubstr(option));
        }
        for (const std::string& option : purposes) {
            EXPECT_EQ(result.out.find(option) != std::string::npos, command.back() == "set");
        }
    }
    EXPECT_THAT(script.endpoints, IsEmpty());
}

TEST_F(ToolTest, VersionNamesTheToolAndItsVersion) {
    const ToolRun result = run({"--version"});
    EXPECT_EQ(result.status, 0);
    const std::regex form("orvel-analytics [0-9]+\\.[0-9]+\\.[0-9]+\n");
    EXPECT_TRUE(std::regex_match(result.out, form)) << result.out;
}

struct WrongUsage {
    const char* name;
    std::vector<std::string> arguments;
    const char* message;
};

class ToolUsageTest : public ToolTest, public testing::WithParamInterface<WrongUsage> {};

TEST_P(ToolUsageTest, IsToldOnStandardErrorWithStatus2) {
    const ToolRun result = run(GetParam().arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr(GetParam().message));
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(script.endpoints, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    WrongUsage, ToolUsageTest,
    testing::Values(
        WrongUsage{"NoCommand", {}, "subcommand is required"},
        WrongUsage{"UnknownCommand", {"frobnicate"}, "there is no command \"frobnicate\""},
        WrongUsage{"UnknownOptionInPlaceOfACommand", {"--fast"}, "there is no option \"--fast\""},
        WrongUsage{"NoApplication",
                   {"report", "--app-version", "1", "--data-class", "x"},
                   "--app is required"},
        WrongUsage{"NoApplicationVersion",
                   {"report", "--app", "a", "--data-class", "x"},
                   "--app-version is required"},
        WrongUsage{"NoDataClass",
                   {"report", "--app", "a", "--app-version", "1"},
                   "--data-class is required"},
        WrongUsage{"UnknownOption",
                   {"report", "--app", "a", "--app-version", "1", "--data-class", "x", "--fast"},
                   "--fast"},
        WrongUsage{"OptionWithoutValue",
                   {"report", "--app-version", "1", "--data-class", "x", "--app"},
                   "--app"},
        WrongUsage{"TwoEventFiles",
                   {"report", "--app", "a", "--app-version", "1", "--data-class", "x", "e", "f"},
                   "f"},
        WrongUsage{
            "BatchOfNothing",
            {"report", "--app", "a", "--app-version", "1", "--data-class", "x", "--batch", "0"},
            "--batch"},
        WrongUsage{"BatchOfTooMany",
                   {"report", "--app", "a", "--app-version", "1", "--data-class", "x", "--batch",
                    "1000001"},
                   "--batch"},
        WrongUsage{
            "BatchThatIsNoNumber",
            {"report", "--app", "a", "--app-version", "1", "--data-class", "x", "--batch", "ten"},
            "--batch"},
        WrongUsage{"NoConsentCommand", {"consent"}, "subcommand is required"},
        WrongUsage{
            "UnknownConsentCommand", {"consent", "forget"}, "there is no command \"forget\""},
        WrongUsage{"SetWithoutAPurpose",
                   {"consent", "set", "--app", "a", "--json"},
                   "name what to change: --marketing, --support, --product-enhancement"},
        WrongUsage{"UnknownPurpose", {"consent", "set", "--research", "accepted"}, "--research"},
        WrongUsage{"UnknownAnswer", {"consent", "set", "--marketing", "maybe"}, "--marketing"},
        WrongUsage{"AnswerAsANumber", {"consent", "set", "--marketing", "0"}, "--marketing"},
        WrongUsage{"PurposeWithoutAnAnswer", {"consent", "set", "--support"}, "--support"},
        WrongUsage{"TwoAnswersForOnePurpose",
                   {"consent", "set", "--support", "accepted", "--support", "rejected"},
                   "--support"},
        WrongUsage{"GetWithAPurpose", {"consent", "get", "--marketing", "accepted"}, "--marketing"},
        WrongUsage{"DocumentsWithAName", {"documents", "privacy"}, "privacy"}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(ToolTest, ADataClassFileThatIsMissingIsWrongUsage) {
    const ToolRun result =
        run({"report", "--app", "a", "--app-version", "1", "--data-class", missing()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, AllOf(HasSubstr(missing()), HasSubstr("No such file")));
}

TEST_F(ToolTest, AnEventsFileThatIsMissingIsWrongUsage) {
    const ToolRun result = runReport({missing()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, AllOf(HasSubstr(missing()), HasSubstr("No such file")));
    EXPECT_THAT(script.endpoints, IsEmpty());
}

TEST_F(ToolTest, WhatTheSessionRejectsIsWrongUsage) {
    EXPECT_THAT(runReport({"--user", "joe"}).err, HasSubstr("UserID must be a GUID"));
    EXPECT_EQ(runReport({"--user", "joe"}).status, 2);
    const std::string file = write("class.json", kDataClass);
    const ToolRun noName = run({"report", "--app", "", "--app-version", "1", "--data-class", file});
    EXPECT_EQ(noName.status, 2);
    EXPECT_THAT(noName.err, HasSubstr("App name cannot be null or empty"));
    const ToolRun noVersion =
        run({"report", "--app", "a", "--app-version", "", "--data-class", file});
    EXPECT_EQ(noVersion.status, 2);
    EXPECT_THAT(noVersion.err, HasSubstr("App version cannot be null or empty"));
}

TEST_F(ToolTest, AnArgumentThatIsNotUtf8IsWrongUsage) {
    const ToolRun result = run({"report", "--app", "caf\xE9", "--app-version", "1", "--data-class",
                                write("class.json", kDataClass)});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("--app: "));
}

TEST_F(ToolTest, AMessageNeverCarriesControlCharactersOfItsInput) {
    const ToolRun result = runReport({"no\x1b[2Jsuch\nfile"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("no\\x1b[2Jsuch\\x0afile"));
    EXPECT_THAT(result.err, testing::Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace Orvel::Tool
