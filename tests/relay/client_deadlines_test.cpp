#include <gtest/gtest.h>

#include "tests/relay/client_conversation.h"

/// How long the client waits for a server.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

using ClientDeadlines = ClientConversation;

TEST_F(ClientDeadlines, GivesUpAServerThatDoesNotGreetAfterTenSeconds) {
    server.accept();
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(10));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpASilentServerAfterTenSeconds) {
    server.welcome().receiveFrame();
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(10));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpAServerThatStopsInMidReplyAfterTenSeconds) {
    server.welcome()
        .receiveFrame()
        .pause(seconds(5))
        .send(replyFrame(1, ORVEL_RELAY_TEXT("never finished")).substr(0, 50));
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(15));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpAServerThatDoesNotReadAfterTenSeconds) {
    server.welcome();
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(10));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpATrickleOfAnAnswerAfterSixtySeconds) {
    server.welcome().receiveFrame().forever().pause(seconds(9)).send("O");
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(60));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpATrickleInTheBodyAfterSixtySeconds) {
    server.welcome().receiveFrame().send(
        replyFrame(1, WideString(10'000, ORVEL_RELAY_TEXT('x'))).substr(0, 32));
    server.forever().pause(seconds(9)).send("x");
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(60));
}

TEST_F(ClientDeadlines, GivesUpAServerThatReadsInATrickleAfterSixtySeconds) {
    server.welcome().forever().pause(seconds(9)).receive(200'000);
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(60));
}

TEST_F(ClientDeadlines, GivesUpAnEndlessStreamWithoutEverWaitingAfterSixtySeconds) {
    server.welcome().receiveFrame();
    std::string endless = replyFrame(1, ORVEL_RELAY_TEXT(""));
    endless[27] = 0x20;  // a body of 512 MiB
    server.send(endless).forever().send(std::string(4096, 'x'));
    open();
    server.slowClock(milliseconds(100));
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_GE(server.elapsed(), seconds(60));
    EXPECT_LT(server.elapsed(), seconds(61));
}

TEST_F(ClientDeadlines, GivesUpACommandThatAlwaysMovesAfterSixtySeconds) {
    server.welcome().forever().receive(200'000);
    open();
    server.slowClock(seconds(2));
    EXPECT_EQ(execute(WideString(8'000'000, ORVEL_RELAY_TEXT('x'))), Status::kTimeout);
    EXPECT_GE(server.elapsed(), seconds(60));
    EXPECT_LT(server.elapsed(), seconds(70));
}

TEST_F(ClientDeadlines, WaitsAsLongAsTheServerSaysThatItIsWorking) {
    server.welcome().receiveFrame();
    for (int i = 0; i < 300; ++i) {
        server.pause(seconds(2)).send(progressFrame(1));
    }
    server.send(replyFrame(1, ORVEL_RELAY_TEXT("done")));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("done"));
    EXPECT_EQ(server.elapsed(), seconds(600));
}

TEST_F(ClientDeadlines, GivesUpAServerThatStopsWorkingAfterTenSeconds) {
    server.welcome().receiveFrame();
    for (int i = 0; i < 100; ++i) {
        server.pause(seconds(2)).send(progressFrame(1));
    }
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(210));
}

TEST_F(ClientDeadlines, GivesUpEndlessProgressAfterAnHour) {
    server.welcome().receiveFrame().forever().pause(seconds(2)).send(progressFrame(1));
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), hours(1));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpAFloodOfProgressWithoutEverWaitingAfterAnHour) {
    std::string flood;
    for (int i = 0; i < 100; ++i) {
        flood += progressFrame(1);
    }
    server.welcome().receiveFrame().forever().send(flood);
    open();
    server.slowClock(milliseconds(100));
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_GE(server.elapsed(), hours(1));
    EXPECT_LT(server.elapsed(), hours(1) + seconds(20));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, GivesUpEndlessProgressInPlaceOfAGreetingAfterAnHour) {
    server.accept().receiveFrame().forever().pause(seconds(2)).send(progressFrame(0));
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), hours(1));
    expectClosedAndUsableAgain();
}

TEST_F(ClientDeadlines, WaitsForAGreetingAsLongAsTheServerSaysThatItIsWorking) {
    server.accept().receiveFrame();
    for (int i = 0; i < 40; ++i) {
        server.pause(seconds(2)).send(progressFrame(0));
    }
    server.send(welcomeFrame());
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
}

TEST_F(ClientDeadlines, EachOperationHasItsOwnDeadlines) {
    server.welcome();
    for (std::uint32_t id = 1; id <= 10; ++id) {
        server.receiveFrame().pause(seconds(9)).send(replyFrame(id, ORVEL_RELAY_TEXT("late")));
    }
    open();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(execute(), Status::kSuccess);
    }
    EXPECT_EQ(server.elapsed(), seconds(90));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
