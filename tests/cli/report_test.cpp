#include "cli/report.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sstream>

#include "cli/tool_fixture.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Tool {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class ReportTest : public ToolTest {
  protected:
    /// The payloads of one batch, in their order.
    static std::vector<nlohmann::json> eventsOf(const std::string& command) {
        const auto document = nlohmann::json::parse(command.substr(command.find('{')));
        std::vector<nlohmann::json> events;
        for (const auto& event : document.at("events").at(0).at("data")) {
            events.push_back(event.at("cls"));
        }
        return events;
    }

    std::vector<std::string> batches() const { return commandsWith("::COLLECT_DATACLASS::"); }
};

TEST_F(ReportTest, RegistersTheClassAndSendsEveryEvent) {
    const ToolRun result = runReport({}, "{\"text\":\"a\"}\n{\"count\":2}\n");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_EQ(result.out,
              "registered data class \"cls\", version \"1.2\", with 2 fields\n"
              "2 events: 2 accepted, 0 refused; 1 batch sent\n");
    const auto registrations = commandsWith("::REGISTER_DATACLASS::");
    ASSERT_THAT(registrations, SizeIs(1));
    EXPECT_EQ(nlohmann::json::parse(registrations[0].substr(registrations[0].find('{'))),
              nlohmann::json::parse(kDataClass));
    ASSERT_THAT(batches(), SizeIs(1));
    const auto events = eventsOf(batches()[0]);
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0].at("text"), "a");
    EXPECT_EQ(events[1].at("count"), 2);
    EXPECT_EQ(events[0].at("V"), "1.2");
}

TEST_F(ReportTest, AsksTheRpcClientFirstAndClosesThatConnection) {
    runReport({}, "");
    ASSERT_THAT(script.endpoints, SizeIs(2)) << "the probe and the registration";
    EXPECT_EQ(script.endpoints[0], ORVEL_TEXT("OrvelAnalyticsRpcEndpoint"));
    EXPECT_EQ(script.openArguments[0], ORVEL_TEXT(""));
    EXPECT_EQ(script.closed, 2);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_F(ReportTest, AnEmptyInputRegistersAndSendsNothing) {
    const ToolRun result = runReport({}, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(commandsWith("::REGISTER_DATACLASS::"), SizeIs(1));
    EXPECT_THAT(batches(), IsEmpty());
    EXPECT_THAT(result.out, HasSubstr("0 events: 0 accepted, 0 refused; 0 batches sent"));
}

TEST_F(ReportTest, ReadsAFileAndTheSameFromADash) {
    const std::string events = write("events.jsonl", "{\"text\":\"a\"}\n");
    EXPECT_EQ(runReport({events}).status, 0);
    EXPECT_EQ(runReport({"-"}, "{\"text\":\"a\"}\n").status, 0);
    EXPECT_THAT(batches(), SizeIs(2));
}

TEST_F(ReportTest, RefusedLinesAreToldWithNumberNameAndCodeAndTheRunGoesOn) {
    const ToolRun result = runReport({},
                                     "{\"text\":\"good\"}\n"
                                     "{\"text\":\"longer\"}\n"
                                     "\n"
                                     "{\"count\":\"x\"}\n"
                                     "[1]\n"
                                     "{\"text\":\"\xE9\"}\n"
                                     "{\"text\":\"good\"}");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("-: line 2: refused: FieldValueTooLong (29): "));
    EXPECT_THAT(result.err,
                HasSubstr("-: line 4: refused: GenericError (1): the value of an integer field"));
    EXPECT_THAT(result.err, HasSubstr("-: line 5: refused: MalformedJson (15): "));
    EXPECT_THAT(result.err, HasSubstr("-: line 6: refused: "));
    EXPECT_THAT(result.out, HasSubstr("6 events: 2 accepted, 4 refused; 1 batch sent"));
    ASSERT_THAT(batches(), SizeIs(1));
    EXPECT_THAT(eventsOf(batches()[0]), SizeIs(2));
}

TEST_F(ReportTest, LineEndsOfBothKindsAndBlankLinesMakeNoDifference) {
    const ToolRun result =
        runReport({}, "\xEF\xBB\xBF{\"text\":\"a\"}\r\n \t\r\n\r\n{\"text\":\"b\"}\r\n");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("2 events: 2 accepted"));
}

TEST_F(ReportTest, ABatchIsSentWhenItIsFull) {
    std::string lines;
    for (int i = 0; i < 5; ++i) {
        lines += "{\"count\":" + std::to_string(i) + "}\n";
    }
    const ToolRun result = runReport({"--batch", "2"}, lines);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("5 events: 5 accepted, 0 refused; 3 batches sent"));
    ASSERT_THAT(batches(), SizeIs(3));
    EXPECT_THAT(eventsOf(batches()[0]), SizeIs(2));
    EXPECT_THAT(eventsOf(batches()[2]),
                ElementsAre(testing::ResultOf(
                    [](const nlohmann::json& event) { return event.at("count").get<int>(); }, 4)));
}

TEST_F(ReportTest, RefusedLinesDoNotCountTowardsABatch) {
    runReport({"--batch", "2"}, "{\"count\":1}\n[]\n[]\n{\"count\":2}\n{\"count\":3}\n");
    ASSERT_THAT(batches(), SizeIs(2));
    EXPECT_THAT(eventsOf(batches()[0]), SizeIs(2));
}

TEST_F(ReportTest, LongLinesAreSentEarlySoThatMemoryStaysBounded) {
    ReportOptions options;
    EXPECT_EQ(options.batchBytes, 32U << 20) << "the limit of every run of the tool";
    options.session = {"app", "3", ""};
    options.dataClassFile = write("class.json", kDataClass);
    options.batchBytes = 2000;
    const std::string line = "{\"other\":\"" + std::string(1000 - 12, 'x') + "\"}";
    ASSERT_EQ(line.size(), 1000U);
    std::string lines;
    for (int i = 0; i < 5; ++i) {
        lines += line + '\n';
    }
    std::istringstream in(lines);
    std::ostringstream out;
    std::ostringstream err;
    Console console{in, out, err, false, false, [] { return kNow; }};
    EXPECT_EQ(report(options, console), ExitStatus::Success) << err.str();
    EXPECT_THAT(out.str(), HasSubstr("5 events: 5 accepted, 0 refused; 3 batches sent"));
    ASSERT_THAT(batches(), SizeIs(3));
    EXPECT_THAT(eventsOf(batches()[0]), SizeIs(2));
    EXPECT_THAT(eventsOf(batches()[1]), SizeIs(2));
}

TEST_F(ReportTest, ALineBeyondTheLimitIsRefusedAndTheNextOneIsRead) {
    const ToolRun result =
        runReport({}, "{\"other\":\"" + std::string(16U << 20, 'x') + "\"}\n{\"count\":1}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("line 1: refused: the line is longer than 16 MiB"));
    EXPECT_THAT(result.out, HasSubstr("2 events: 1 accepted, 1 refused"));
}

TEST_F(ReportTest, TheVerdictOfTheServiceNamesTheLinesOfTheBatch) {
    // Two commands for the registration and two for each batch; this is the second batch's.
    answerWithError(5, "COLLECT_DATACLASS", "QuotaExceeded");
    const ToolRun result = runReport(
        {"--batch", "2"}, "{\"count\":1}\n{\"count\":2}\n\n{\"count\":3}\n[]\n{\"count\":4}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err,
                HasSubstr("-: lines 4 to 6: the batch of 2 events was not accepted as a "
                          "whole: QuotaExceeded (24): "));
    EXPECT_THAT(result.out, HasSubstr("5 events: 2 accepted, 1 refused, 2 not confirmed; 2 batches "
                                      "sent, 1 of them answered with an error"));
}

TEST_F(ReportTest, AReplyThatCannotBeReadIsAVerdictOnItsBatchAlone) {
    script.onExecute = [this, turn = 0](const Analytics::Testing::Executed&) mutable {
        if (turn++ == 3) {
            script.executions.resize(3);
            script.executions.push_back({0, ORVEL_TEXT("app::COLLECT_DATACLASS::ErrorCode")});
        }
    };
    const ToolRun result = runReport({"--batch", "1"}, "{\"count\":1}\n{\"count\":2}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("lines 1 to 1: the batch of 1 events was not accepted as a "
                                      "whole: the service's reply cannot be read: "));
    EXPECT_THAT(result.out, HasSubstr("2 events: 1 accepted, 0 refused, 1 not confirmed"));
}

TEST_F(ReportTest, AGenericVerdictOfAServiceThatIsStillThereDoesNotEndTheRun) {
    answerWithError(3, "COLLECT_DATACLASS", "GenericError");
    const ToolRun result = runReport({"--batch", "1"}, "{\"count\":1}\n{\"count\":2}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(batches(), SizeIs(2));
}

TEST_F(ReportTest, AServiceThatGoesAwayEndsTheRunWithStatus3) {
    script.onExecute = [this](const Analytics::Testing::Executed& executed) {
        if (executed.command.find(ORVEL_TEXT("::REGISTER_DATACLASS::")) !=
            Relay::WideString::npos) {
            script.openStatus = Relay::Status::kServerUnavailable;
        }
    };
    const ToolRun result = runReport({"--batch", "1"}, "{\"count\":1}\n{\"count\":2}\n");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.err, HasSubstr("lines 1 to 1: the batch of 1 events was not accepted"));
    EXPECT_THAT(result.err, HasSubstr("nobody listens at its endpoint"));
    EXPECT_THAT(result.out, HasSubstr("1 event: 0 accepted, 0 refused, 1 not confirmed"));
}

TEST_F(ReportTest, AnUnreachableServiceIsStatus3WithTheReasonInWords) {
    script.openStatus = Relay::Status::kServerUnavailable;
    const ToolRun result = runReport({}, "{\"count\":1}\n");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.err, AllOf(HasSubstr("nobody listens"), HasSubstr("(status 1722)")));
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(script.executed, IsEmpty());
    EXPECT_EQ(script.closed, 0) << "what was not opened must not be closed";
}

TEST_F(ReportTest, ANotPermittedServiceIsStatus3) {
    script.openStatus = Relay::Status::kAccessDenied;
    const ToolRun result = runReport({}, "");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.err, HasSubstr("this user may not connect to it (status 5)"));
}

TEST_F(ReportTest, AnEndpointWithoutAClientIsStatus3) {
    script.yieldsNoClient = true;
    EXPECT_EQ(runReport({}, "").status, 3);
}

TEST_F(ReportTest, AServiceThatGoesAwayBeforeTheRegistrationIsStatus3) {
    script.onClient = [this] {
        script.openStatus = script.endpoints.size() == 1 ? 0 : Relay::Status::kServerUnavailable;
    };
    const ToolRun result = runReport({}, "");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.err, HasSubstr("ServiceUnavailable (22)"));
}

TEST_F(ReportTest, ARefusedRegistrationEndsTheRunBeforeAnythingIsSent) {
    answerWithError(1, "REGISTER_DATACLASS", "InvalidDataclassRegistration");
    const ToolRun result = runReport({}, "{\"count\":1}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("the registration was refused: InvalidDataclassRegistration "
                                      "(13): "));
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(batches(), IsEmpty());
}

TEST_F(ReportTest, ARegistrationWhoseReplyCannotBeReadIsStatus4) {
    script.executions = {{0, ORVEL_TEXT("app::ACK::")}, {0, ORVEL_TEXT("ErrorCode")}};
    const ToolRun result = runReport({}, "{\"count\":1}\n");
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("the service's reply cannot be read"));
}

TEST_F(ReportTest, AFieldTypeWhoseLengthIsOutOfRangeRefusesTheLinesThatUseIt) {
    const std::string file = write("big.json", R"json({
        "name": "n", "id": "cls", "version": "1", "fields": [
            {"id": "t", "name": "T", "nullable": "true", "type": "varchar(99999999999)"}]})json");
    const ToolRun result =
        run({"report", "--app", "app", "--app-version", "1", "--data-class", file},
            "{\"t\":\"x\"}\n{\"u\":1}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("line 1: refused: the length in a field's varchar type"));
    EXPECT_THAT(result.out, HasSubstr("2 events: 1 accepted, 1 refused"));
}

TEST_F(ReportTest, WithoutATimeMemberAnEventHasTheTimeOfItsCollection) {
    const ToolRun result = runReport({}, "{\"count\":1}\n");
    ASSERT_EQ(result.status, 0);
    const std::string stamp = eventsOf(batches().at(0)).at(0).at("DT");
    // 2023-11-14 22:13:20 UTC; whatever the time zone, within a day of it and at that minute's end.
    EXPECT_THAT(stamp, testing::AnyOf(StartsWith("20231114T"), StartsWith("20231115T")));
    EXPECT_THAT(stamp, AllOf(SizeIs(15), testing::EndsWith("20")));
}

TEST_F(ReportTest, TheTimeMemberStampsEachEvent) {
    const ToolRun result = runReport({"--time-member", "at"},
                                     "{\"at\":\"2024-01-31 23:59:58\"}\n"
                                     "{\"at\":\"2024-02-01T00:00:01\",\"count\":1}\n");
    EXPECT_EQ(result.status, 0) << result.err;
    const auto events = eventsOf(batches().at(0));
    EXPECT_EQ(events.at(0).at("DT"), "20240131T235958");
    EXPECT_EQ(events.at(0).at("at"), "2024-01-31 23:59:58") << "the member itself stays";
    EXPECT_EQ(events.at(1).at("DT"), "20240201T000001");
}

TEST_F(ReportTest, ALineWithoutAUsableTimeIsRefused) {
    const ToolRun result = runReport({"--time-member", "at"},
                                     "{\"count\":1}\n"
                                     "{\"at\":\"yesterday\"}\n"
                                     "{\"at\":0}\n"
                                     "{\"at\":\n"
                                     "7\n"
                                     "{\"at\":1700000000}\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("line 1: refused: the event has no member \"at\""));
    EXPECT_THAT(result.err, HasSubstr("line 2: refused: the time is not of the form"));
    EXPECT_THAT(result.err, HasSubstr("line 3: refused: the time does not lie between"));
    EXPECT_THAT(result.err, HasSubstr("line 4: refused: MalformedJson (15): "));
    EXPECT_THAT(result.err, HasSubstr("line 5: refused: MalformedJson (15): "));
    EXPECT_THAT(result.out, HasSubstr("6 events: 1 accepted, 5 refused"));
}

TEST_F(ReportTest, TheUsersIdentifierIsHandedOn) {
    const std::string user = "{0f8fad5b-d9cb-469f-a165-70867728950e}";
    EXPECT_EQ(runReport({"--user", user}, "{\"count\":1}\n").status, 0);
    EXPECT_THAT(batches().at(0), HasSubstr(user));
}

TEST_F(ReportTest, ProgressIsDrawnOnATerminalOnly) {
    const std::string events = write("events.jsonl", "{\"count\":1}\n");
    EXPECT_THAT(runReport({events}).err, IsEmpty());
    terminal = true;
    const ToolRun drawn = runReport({events});
    EXPECT_THAT(drawn.err, AllOf(HasSubstr("100%"), testing::EndsWith("\r\x1b[K")));
    EXPECT_THAT(drawn.out, Not(HasSubstr("%")));
}

TEST_F(ReportTest, AFolderIsNoInput) {
    const ToolRun result = runReport({argumentFor(folder.path())});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("is a folder"));
}

TEST_F(ReportTest, TheSampleOfTheRepositoryIsAccepted) {
    const std::string sample = ORVEL_EXAMPLE_REPORT;
    const ToolRun result =
        run({"report", "--app", "app", "--app-version", "1", "--data-class",
             sample + "/app_usage.json", "--time-member", "when", sample + "/events.jsonl"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("24 events: 24 accepted, 0 refused; 1 batch sent"));
}

}  // namespace
}  // namespace Orvel::Tool
