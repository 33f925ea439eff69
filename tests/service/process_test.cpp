#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <signal.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "client.h"
#include "support/service_process.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using Support::ServiceProcess;
using testing::HasSubstr;

const std::string kBatchBegin =
    R"(MyApp::COLLECT_DATACLASS::{"events":[{"appsession":{"V":"1","DT":"20240131T235959",)"
    R"("1":"MyApp","2":"2","3":"S","4":0,"5":"U","6":"D","7":"Production"},"data":[)";
const std::string kBatchEnd = "]}]}";
const std::string kRegistration =
    R"(MyApp::REGISTER_DATACLASS::{"name":"An event","id":"Evt","version":"1","fields":[)"
    R"({"id":"count","name":"Count","nullable":"false","type":"integer"}]})";

std::string event(int count) {
    return R"({"Evt":{"count":)" + std::to_string(count) + R"(,"DT":"20240131T235959","V":"1"}})";
}

class ProcessTest : public testing::Test {
  protected:
    void start() {
        service_.start();
        service_.useEndpoint();
    }
    static void registerClass(Client& client) {
        ASSERT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
        ASSERT_EQ(client.say(kRegistration), u"MyApp::SUCCESS::");
    }
    std::vector<json> lines(std::vector<std::string> arguments) {
        arguments.push_back("--json");
        const auto output = service_.run(arguments);
        EXPECT_EQ(output.status, 0) << output.error;
        std::vector<json> all;
        std::istringstream stream(output.out);
        for (std::string line; std::getline(stream, line);) {
            all.push_back(json::parse(line));
        }
        return all;
    }

    ServiceProcess service_{ORVEL_ANALYTICSD};
};

TEST_F(ProcessTest, StoresWhatAnApplicationReportsAndShowsItWhileItRuns) {
    start();
    Client client;
    registerClass(client);
    EXPECT_EQ(
        client.say(kBatchBegin + event(1) + "," + R"({"Evt":{}})" + "," + event(2) + kBatchEnd),
        u"MyApp::COLLECT_DATACLASS::"
        u"{\"Results\":[\"ErrorCode :DataclassNotFollowRegisteredFormat\"]}");
    const auto events = lines({"events"});
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0]["values"]["count"], 1);
    EXPECT_EQ(events[1]["error"], "DataclassNotFollowRegisteredFormat");
    EXPECT_EQ(events[2]["values"]["count"], 2);
    EXPECT_EQ(lines({"events", "--good"}).size(), 2U);
    EXPECT_EQ(lines({"events", "--bad"}).size(), 1U);
    EXPECT_EQ(lines({"events", "--class", "Nothing"}).size(), 0U);
    EXPECT_EQ(lines({"events", "--limit", "1"}).size(), 1U);
    EXPECT_EQ(service_.run({"events", "--count"}).out, "3\n");
    const auto classes = lines({"classes"});
    ASSERT_EQ(classes.size(), 1U);
    EXPECT_EQ(classes[0]["id"], "Evt");
    EXPECT_EQ(service_.stop(), 0);
    EXPECT_EQ(lines({"events"}).size(), 3U) << "after the service has ended";
}

TEST_F(ProcessTest, RefusesAnotherTargetWithAStatusAndKeepsTheConnection) {
    start();
    Client client;
    Relay::WideString reply = u"untouched";
    EXPECT_EQ(client.execute(u"TB", u"MyApp::CONNECT_APP::", reply), 1717);
    EXPECT_EQ(reply, u"untouched");
    EXPECT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
}

TEST_F(ProcessTest, EndsCleanlyOnEitherSignal) {
    for (const int number : {SIGTERM, SIGINT}) {
        start();
        const auto socket = service_.endpointFolder() / "OrvelAnalyticsRpcEndpoint.sock";
        EXPECT_TRUE(std::filesystem::exists(socket));
        EXPECT_EQ(service_.stop(number), 0);
        EXPECT_FALSE(std::filesystem::exists(socket));
        EXPECT_THAT(service_.log().back(), HasSubstr(R"("event":"stopped")"));
    }
}

TEST_F(ProcessTest, EndsCleanlyHoweverOftenItIsToldTo) {
    start();
    EXPECT_EQ(service_.stopInsistently(SIGTERM), 0);
    EXPECT_THAT(service_.log().back(), HasSubstr(R"("event":"stopped")"));
}

TEST_F(ProcessTest, LogsItsLifeAsLinesOfJson) {
    start();
    service_.stop();
    std::vector<std::string> events;
    for (const std::string& line : service_.log()) {
        events.push_back(json::parse(line)["event"]);
    }
    EXPECT_THAT(events, testing::ElementsAre("started", "listening", "stopped"));
}

TEST_F(ProcessTest, MakesTheDataFolderForItsOwnerOnly) {
    start();
    EXPECT_EQ(std::filesystem::status(service_.dataFolder()).permissions(),
              std::filesystem::perms::owner_all);
    for (const auto& file : std::filesystem::directory_iterator(service_.dataFolder())) {
        EXPECT_EQ(file.status().permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
            << file;
    }
}

TEST_F(ProcessTest, SecondServiceOnTheSameDataRefuses) {
    start();
    const Support::TemporaryFolder elsewhere;
    const auto second =
        Support::runProgram(ORVEL_ANALYTICSD, {"serve", "--data", service_.dataFolder().string()},
                            {"ORVEL_RPC_DIRECTORY=" + elsewhere.path().string()});
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.error, HasSubstr("another service uses the data folder"));
    Client client;
    EXPECT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::") << "the first one serves on";
}

TEST_F(ProcessTest, SecondServiceOnTheSameEndpointRefuses) {
    start();
    const Support::TemporaryFolder elsewhere;
    const auto second =
        Support::runProgram(ORVEL_ANALYTICSD, {"serve", "--data", elsewhere.path().string()},
                            {"ORVEL_RPC_DIRECTORY=" + service_.endpointFolder().string()});
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.error, HasSubstr(R"("event":"failed")"));
    Client client;
    EXPECT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::") << "the first one serves on";
}

TEST_F(ProcessTest, AcknowledgedEventsSurviveAKill) {
    constexpr int kRounds = 5;
    constexpr int kBatches = 4;
    for (int round = 0; round < kRounds; ++round) {
        start();
        Client client;
        registerClass(client);
        for (int i = 0; i < kBatches; ++i) {
            ASSERT_EQ(client.say(kBatchBegin + event(round * kBatches + i) + kBatchEnd),
                      u"MyApp::SUCCESS::");
        }
        service_.kill();
        EXPECT_EQ(service_.run({"events", "--count"}).out,
                  std::to_string((round + 1) * kBatches) + "\n")
            << "while no service runs";
    }
    start();
    const auto events = lines({"events", "--good"});
    constexpr int kAll = kRounds * kBatches;
    ASSERT_EQ(events.size(), std::size_t{kAll});
    for (int i = 0; i < kAll; ++i) {
        EXPECT_EQ(events[static_cast<std::size_t>(i)]["values"]["count"], i);
    }
}

TEST_F(ProcessTest, ClientsAreServedSideBySide) {
    start();
    constexpr int kClients = 8;
    constexpr int kBatches = 10;
    {
        Client client;
        registerClass(client);
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < kClients; ++i) {
        threads.emplace_back([] {
            Client client;
            EXPECT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
            for (int k = 0; k < kBatches; ++k) {
                EXPECT_EQ(client.say(kBatchBegin + event(k) + "," + event(k) + kBatchEnd),
                          u"MyApp::SUCCESS::");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(service_.run({"events", "--count"}).out,
              std::to_string(kClients * kBatches * 2) + "\n");
}

TEST_F(ProcessTest, WrongUsageIsToldFromFailure) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"nonsense"},
                                               {"events", "--good", "--bad"},
                                               {"events", "--limit", "-1"},
                                               {"serve", "--data"}}) {
        EXPECT_EQ(Support::runProgram(ORVEL_ANALYTICSD, arguments).status, 2);
    }
    const auto missing = service_.run({"events"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.error, HasSubstr("there is no data in"));
    const std::string longName(300, 'x');
    const auto unreadable =
        Support::runProgram(ORVEL_ANALYTICSD, {"events", "--data", "/tmp/" + longName});
    EXPECT_EQ(unreadable.status, 1);
    EXPECT_EQ(unreadable.error, "orvel-analyticsd: cannot look into the data folder /tmp/" +
                                    longName + ": File name too long\n");
}

TEST_F(ProcessTest, AnUnknownCommandOrOptionIsNamed) {
    const auto command = Support::runProgram(ORVEL_ANALYTICSD, {"bogus\x1b[2J"});
    EXPECT_EQ(command.status, 2);
    EXPECT_EQ(command.out, "");
    EXPECT_EQ(command.error,
              "orvel-analyticsd: there is no command \"bogus\\u001b[2J\"; see --help\n");
    const auto option = Support::runProgram(ORVEL_ANALYTICSD, {"--bogus"});
    EXPECT_EQ(option.status, 2);
    EXPECT_EQ(option.error, "orvel-analyticsd: there is no option \"--bogus\"; see --help\n");
}

TEST_F(ProcessTest, HelpBeginsWithAnExample) {
    const auto help = Support::runProgram(ORVEL_ANALYTICSD, {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, testing::StartsWith("Example:\n  orvel-analyticsd serve "));
    EXPECT_LT(help.out.find("Example:"), help.out.find("Usage:"));
    EXPECT_THAT(Support::runProgram(ORVEL_ANALYTICSD, {"--version"}).out,
                testing::StartsWith("orvel-analyticsd "));
    for (const char* command : {"serve", "events", "classes", "consent", "status"}) {
        EXPECT_THAT(help.out, testing::ContainsRegex(std::string("\n  ") + command + "  +[A-Z]"));
        const auto own = Support::runProgram(ORVEL_ANALYTICSD, {command, "--help"});
        EXPECT_THAT(own.out,
                    testing::StartsWith(std::string("Example:\n  orvel-analyticsd ") + command));
    }
}

TEST_F(ProcessTest, HelpShowsTheDataFolderThatIsUsed) {
    const auto help = Support::runProgram(ORVEL_ANALYTICSD, {"events", "--help"},
                                          {"XDG_STATE_HOME=/a/state/of/my/own"});
    EXPECT_THAT(help.out, HasSubstr(::geteuid() == 0 ? "/var/lib/orvel-analytics"
                                                     : "/a/state/of/my/own/orvel-analytics"));
}

TEST_F(ProcessTest, DataFolderThatCannotBeMadeIsAFailure) {
    const auto output = Support::runProgram(ORVEL_ANALYTICSD, {"serve", "--data", "/dev/null/x"});
    EXPECT_EQ(output.status, 1);
    EXPECT_THAT(output.error, HasSubstr(R"("event":"failed")"));
}

}  // namespace
}  // namespace Orvel::Service
