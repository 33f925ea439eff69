#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pwd.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "client.h"
#include "support/service_process.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using testing::HasSubstr;

const std::string kRefused = R"({"Results":["ErrorCode :ApplicationIsNotAuthorizedToConnect"]})";

std::string batchOf(int events) {
    std::string text =
        R"(MyApp::COLLECT_DATACLASS::{"events":[{"appsession":{"V":"","DT":"","1":"MyApp",)"
        R"("2":"","3":"","4":0,"5":"","6":"","7":""},"data":[)";
    for (int event = 0; event < events; ++event) {
        text += (event == 0 ? "" : ",") + std::to_string(event);
    }
    return text + "]}]}";
}

class LimitsProcessTest : public testing::Test {
  protected:
    void start(const std::string& settings) {
        service_.useSettings(settings);
        service_.start();
        service_.useEndpoint();
    }
    json status() {
        const auto output =
            service_.run({"status", "--json", "--settings", service_.settingsFile().string()});
        EXPECT_EQ(output.status, 0) << output.error;
        return json::parse(output.out);
    }
    std::string stored() { return service_.run({"events", "--count"}).out; }

    Support::ServiceProcess service_{ORVEL_ANALYTICSD};
};

TEST_F(LimitsProcessTest, BatchBeyondTheDaysEventsIsRefusedAndNothingOfItIsStored) {
    start("limits.events_per_day = 3");
    Client client;
    client.say("MyApp::CONNECT_APP::");
    EXPECT_EQ(client.say(batchOf(4)),
              wide(R"(MyApp::COLLECT_DATACLASS::{"Results":["ErrorCode :QuotaExceeded"]})"));
    EXPECT_EQ(stored(), "0\n");
    EXPECT_EQ(status()["events_today"], json::array());
    EXPECT_NE(client.say(batchOf(3)), client.say(batchOf(4)));
    EXPECT_EQ(stored(), "3\n");
    EXPECT_EQ(status()["events_per_day_limit"], 3);
}

TEST_F(LimitsProcessTest, CommandBeyondTheLimitIsNotEvenSent) {
    start("limits.command_bytes = 4096");
    Client client;
    const std::string name(2048 - 15, 'a');
    EXPECT_EQ(client.say(name + "::CONNECT_APP::"), wide(name + "::ACK::"));
    EXPECT_EQ(client.say(name + "b::CONNECT_APP::"), u"status 1743");
    EXPECT_EQ(client.say(name + "::CONNECT_APP::"), wide(name + "::ACK::"));
}

TEST_F(LimitsProcessTest, ConnectionBeyondTheLimitIsTurnedAway) {
    start("limits.connections = 2");
    const auto connect = [] {
        return Relay::Client::Native::RpcClient::GetClientForEndpoint(u"OrvelAnalyticsRpcEndpoint");
    };
    Client first;
    Client second;
    const auto third = connect();
    EXPECT_EQ(third->OpenConnection({}), 1723);
    EXPECT_EQ(first.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
}

TEST_F(LimitsProcessTest, OnlyApplicationsOnTheListAreServed) {
    start("[[access.applications]]\nname = 'MyApp'");
    Client client;
    EXPECT_EQ(client.say("Other::CONNECT_APP::"), wide("Other::ACK::" + kRefused));
    EXPECT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
}

TEST_F(LimitsProcessTest, OnlyUsersOnTheListAreServed) {
    start("access.users = [" + std::to_string(::geteuid() + 1) + "]");
    EXPECT_EQ(Client().say("MyApp::CONNECT_APP::"), wide("MyApp::ACK::" + kRefused));
    service_.stop();
    start("access.users = [" + std::to_string(::geteuid()) + "]");
    EXPECT_EQ(Client().say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
    service_.stop();
    const passwd* self = ::getpwuid(::geteuid());
    ASSERT_NE(self, nullptr);
    start("access.users = ['" + std::string(self->pw_name) + "']");
    EXPECT_EQ(Client().say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
}

TEST_F(LimitsProcessTest, WrongLimitKeepsTheServiceFromStarting) {
    service_.useSettings("[limits]\nconnections = 0");
    EXPECT_THROW(service_.start(), std::runtime_error);
    EXPECT_THAT(service_.log().at(service_.log().size() - 2),
                HasSubstr("settings.toml:2:15: connections must be a whole number from 1 to "
                          "100000"));
}

TEST_F(LimitsProcessTest, StatusOfADataFolderThatIsMissingIsAFailure) {
    const auto output = service_.run({"status"});
    EXPECT_EQ(output.status, 1);
    EXPECT_THAT(output.error, HasSubstr("there is no data in"));
}

}  // namespace
}  // namespace Orvel::Service
