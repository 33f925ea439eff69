/// The raw road: statuses and replies that a test writes down.

#include "orvel/analytics/testing/scripted_endpoint.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "orvel/analytics/testing/service.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Analytics::Testing {
namespace {

using Relay::Client::Native::RpcClient;
using testing::ElementsAre;

class Scripted : public testing::Test {
  protected:
    std::int32_t execute(WideString command) {
        return RpcClient::GetClientForEndpoint(ORVEL_TEXT("E"))
            ->ExecuteCommand(ORVEL_TEXT("T"), 7, std::move(command), reply);
    }

    ScriptedEndpoint endpoint;
    WideString reply = ORVEL_TEXT("before");
};

TEST_F(Scripted, AcknowledgesAndAcceptsUntilToldOtherwise) {
    EXPECT_EQ(execute(ORVEL_TEXT("A::CONNECT_APP::")), 0);
    EXPECT_EQ(reply, ORVEL_TEXT("A::ACK::"));
    EXPECT_EQ(execute(ORVEL_TEXT("anything")), 0);
    EXPECT_EQ(reply, ORVEL_TEXT("::SUCCESS::"));
}

TEST_F(Scripted, AnswersInTurn) {
    endpoint.executions = {{0, ORVEL_TEXT("one")}, {1726, std::nullopt}, {5, ORVEL_TEXT("three")}};
    EXPECT_EQ(execute({}), 0);
    EXPECT_EQ(reply, ORVEL_TEXT("one"));
    EXPECT_EQ(execute({}), 1726);
    EXPECT_EQ(reply, ORVEL_TEXT("one")) << "nothing was written";
    EXPECT_EQ(execute({}), 5);
    EXPECT_EQ(reply, ORVEL_TEXT("three"));
    endpoint.onUnscripted = [](const Executed& executed) {
        return Execution{0, ORVEL_TEXT("to ") + executed.command};
    };
    EXPECT_EQ(execute(ORVEL_TEXT("four")), 0);
    EXPECT_EQ(reply, ORVEL_TEXT("to four"));
}

TEST_F(Scripted, KeepsWhatItWasAsked) {
    execute(ORVEL_TEXT("x"));
    ASSERT_EQ(endpoint.executed.size(), 1U);
    EXPECT_EQ(endpoint.executed[0].target, ORVEL_TEXT("T"));
    EXPECT_EQ(endpoint.executed[0].argument, 7U);
    EXPECT_EQ(endpoint.executed[0].command, ORVEL_TEXT("x"));
    EXPECT_THAT(endpoint.endpoints, ElementsAre(ORVEL_TEXT("E")));
}

TEST_F(Scripted, OpensAndClosesAsItIsTold) {
    const auto client = RpcClient::GetClientForEndpoint({});
    endpoint.openStatus = 1722;
    endpoint.closeStatus = 1726;
    EXPECT_EQ(endpoint.clientsAlive, 1);
    EXPECT_EQ(client->OpenConnection(ORVEL_TEXT("hello")), 1722);
    EXPECT_EQ(client->CloseConnection(), 1726);
    EXPECT_THAT(endpoint.openArguments, ElementsAre(ORVEL_TEXT("hello")));
    EXPECT_EQ(endpoint.closed, 1);
}

TEST_F(Scripted, YieldsNoClient) {
    endpoint.yieldsNoClient = true;
    EXPECT_EQ(RpcClient::GetClientForEndpoint({}), nullptr);
    EXPECT_EQ(endpoint.clientsAlive, 0);
}

TEST_F(Scripted, RaisesWhatItsFunctionsRaise) {
    endpoint.onExecute = [](const Executed&) { throw std::runtime_error("on execute"); };
    EXPECT_THROW(execute({}), std::runtime_error);
    endpoint.onClient = [] { throw 7; };
    EXPECT_THROW(execute({}), int);
    EXPECT_EQ(endpoint.clientsAlive, 0);
}

TEST_F(Scripted, CountsBesideServices) {
    auto service = std::make_unique<Service>();
    static_cast<void>(execute(ORVEL_TEXT("to the service")));
    EXPECT_TRUE(endpoint.endpoints.empty());
    service.reset();
    execute(ORVEL_TEXT("to the endpoint"));
    EXPECT_EQ(endpoint.endpoints.size(), 1U);
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
