#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cli/report_summary.h"
#include "cli/tool_fixture.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Tool {
namespace {

using nlohmann::json;

class ReportJsonTest : public ToolTest {
  protected:
    json runJson(std::vector<std::string> arguments, const std::string& input) {
        arguments.emplace_back("--json");
        const ToolRun result = runReport(arguments, input);
        json summary = json::parse(result.out);  // Nothing but one object may stand there.
        EXPECT_EQ(summary.at("exit_status"), result.status);
        return summary;
    }
};

TEST_F(ReportJsonTest, CountsWhatWasAccepted) {
    const json expected{{"registered", true},
                        {"lines", 2},
                        {"accepted", 2},
                        {"refused", 0},
                        {"unconfirmed", 0},
                        {"batches", 1},
                        {"batches_refused", 0},
                        {"refused_lines", json::array()},
                        {"refused_lines_omitted", 0},
                        {"refused_batches", json::array()},
                        {"refused_batches_omitted", 0},
                        {"exit_status", 0},
                        {"error", nullptr}};
    EXPECT_EQ(runJson({}, "{\"count\":1}\n{\"count\":2}\n"), expected);
}

TEST_F(ReportJsonTest, NamesEachRefusedLine) {
    const json summary = runJson({}, "{}\n{\"count\":1}\n\"\xFF\"\n");
    const json& lines = summary.at("refused_lines");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].at("line"), 1);
    EXPECT_EQ(lines[0].at("result"), "MalformedJson");
    EXPECT_EQ(lines[0].at("code"), 15);
    EXPECT_EQ(lines[1].at("line"), 3);
    EXPECT_EQ(lines[1].at("result"), nullptr);
    EXPECT_EQ(lines[1].at("code"), nullptr);
    EXPECT_FALSE(lines[1].at("reason").get<std::string>().empty());
    EXPECT_EQ(summary.at("exit_status"), 1);
}

TEST_F(ReportJsonTest, NamesEachRefusedBatch) {
    answerWithError(3, "COLLECT_DATACLASS", "UnregisteredDataclass");
    const json summary =
        runJson({"--batch", "2"}, "\n{\"count\":1}\n{\"count\":2}\n{\"count\":3}\n");
    const json& batches = summary.at("refused_batches");
    ASSERT_EQ(batches.size(), 1U);
    EXPECT_EQ(batches[0].at("first_line"), 2);
    EXPECT_EQ(batches[0].at("last_line"), 3);
    EXPECT_EQ(batches[0].at("events"), 2);
    EXPECT_EQ(batches[0].at("result"), "UnregisteredDataclass");
    EXPECT_EQ(batches[0].at("code"), 16);
    EXPECT_EQ(summary.at("unconfirmed"), 2);
    EXPECT_EQ(summary.at("accepted"), 1);
}

TEST_F(ReportJsonTest, SaysWhyARunBrokeOff) {
    script.openStatus = Relay::Status::kTimeout;
    const json summary = runJson({}, "{\"count\":1}\n");
    EXPECT_EQ(summary.at("exit_status"), 3);
    EXPECT_EQ(summary.at("registered"), false);
    EXPECT_THAT(summary.at("error").get<std::string>(),
                testing::HasSubstr("did not answer in time"));
}

TEST_F(ReportJsonTest, AFileNameThatIsNotUtf8StillMakesJson) {
    const json summary = runJson({missing() + "\xFF"}, "");
    EXPECT_EQ(summary.at("exit_status"), 2);
}

TEST_F(ReportJsonTest, NoFileNameCanSteerATerminal) {
    const ToolRun result = runReport({"--json", "no\u009b\u202esuch\x7f"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.out, testing::HasSubstr("no\\u009b\\u202esuch\\u007f"));
}

TEST_F(ReportJsonTest, ListsNoMoreRefusalsThanMemoryAllows) {
    std::string lines;
    for (std::size_t i = 0; i < ReportSummary::kLongestList + 5; ++i) {
        lines += "[]\n";
    }
    const json summary = runJson({}, lines);
    EXPECT_EQ(summary.at("refused"), ReportSummary::kLongestList + 5);
    EXPECT_EQ(summary.at("refused_lines").size(), ReportSummary::kLongestList);
    EXPECT_EQ(summary.at("refused_lines_omitted"), 5);
}

}  // namespace
}  // namespace Orvel::Tool
