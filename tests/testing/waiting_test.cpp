/// A service that never answers, and the fake clock.

#include <chrono>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "relay/client/deadlines.h"
#include "testing/session_fixture.h"

namespace Orvel::Analytics::Testing {
namespace {

using namespace std::chrono_literals;
using Relay::Client::Native::RpcClient;
using testing::ElementsAre;

static_assert(kConnectDeadline == Relay::Client::kConnectDeadline);
static_assert(kAnswerDeadline == Relay::Client::kQuietDeadline);

using Waiting = SessionWithService;

TEST_F(Waiting, MovesTheFakeClockByTheDeadlineOfTheStep) {
    EXPECT_EQ(service.waited(), 0ms);
    service.answerNext(Step::Connect, Answer::silence());
    EXPECT_EQ(session.RegisterDataClass(&click), AnalyticsResult::GenericError);
    EXPECT_EQ(service.waited(), 2s);
    service.answerNext(Step::SendEvents, Answer::silence());
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::GenericError);
    EXPECT_EQ(service.waited(), 12s);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
    EXPECT_EQ(service.waited(), 12s) << "an answer takes no time";
}

TEST_F(Waiting, EndsWithTheStatusOfTheDeadline) {
    const auto client = RpcClient::GetClientForEndpoint({});
    service.answerNext(Step::Connect, Answer::silence());
    EXPECT_EQ(client->OpenConnection({}), Relay::Status::kTimeout);
    EXPECT_EQ(client->OpenConnection({}), Relay::Status::kSuccess);
    service.answerNext(Step::Greet, Answer::silence());
    WideString reply = ORVEL_TEXT("untouched");
    EXPECT_EQ(
        client->ExecuteCommand(ORVEL_TEXT("TA"), 0, ORVEL_TEXT("MyApp::CONNECT_APP::"), reply),
        Relay::Status::kTimeout);
    EXPECT_EQ(reply, ORVEL_TEXT("untouched"));
    EXPECT_EQ(client->CloseConnection(), Relay::Status::kConnectionLost) << "it is closed already";
}

TEST_F(Waiting, RecordsACommandThatArrivedAndWasNotAnswered) {
    collect(R"({"count":1})");
    service.answerNext(Step::SendEvents, Answer::silence());
    session.SendEvents();
    ASSERT_EQ(service.batches().size(), 1U);
    EXPECT_FALSE(service.batches()[0].accepted);
}

TEST_F(Waiting, MovesAClockOfTheApplicationAlong) {
    std::vector<std::chrono::milliseconds> moves;
    std::vector<std::chrono::milliseconds> seen;
    service.onWait([&](std::chrono::milliseconds moved) {
        moves.push_back(moved);
        seen.push_back(service.waited());
    });
    service.answer(Step::Connect, Answer::silence());
    session.SendEvents();
    session.SendEvents();
    EXPECT_THAT(moves, ElementsAre(2s, 2s));
    EXPECT_THAT(seen, ElementsAre(2s, 4s)) << "the service can be asked meanwhile";
    service.onWait(nullptr);
    session.SendEvents();
    EXPECT_EQ(moves.size(), 2U);
}

TEST_F(Waiting, IsOverForAClientWithoutAConnection) {
    const auto client = RpcClient::GetClientForEndpoint({});
    WideString reply;
    EXPECT_EQ(client->ExecuteCommand(ORVEL_TEXT("TA"), 0, {}, reply),
              Relay::Status::kConnectionLost);
    EXPECT_EQ(client->CloseConnection(), Relay::Status::kConnectionLost);
    EXPECT_EQ(client->OpenConnection({}), Relay::Status::kSuccess);
    EXPECT_EQ(client->ExecuteCommand(ORVEL_TEXT("TA"), 0, ORVEL_TEXT("hello"), reply),
              Relay::Status::kSuccess);
    EXPECT_NE(reply.find(ORVEL_TEXT("ErrorCode :MalformedOrUnknownMessage")), WideString::npos);
    EXPECT_EQ(client->CloseConnection(), Relay::Status::kSuccess);
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
