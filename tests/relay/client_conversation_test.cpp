#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/scripted_server.h"

/// The client's side of a conversation with a server that keeps to the protocol, and with one that
/// does not.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

class ClientConversation : public testing::Test {
  protected:
    void open() { ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess); }

    std::int32_t execute(const WideString& command = u"command") {
        return client->ExecuteCommand(u"TA", 0, command, reply);
    }

    // The connection is closed and the reply untouched, and the client can be opened again.
    void expectClosedAndUsableAgain() {
        EXPECT_EQ(reply, u"untouched");
        EXPECT_EQ(execute(), Status::kConnectionLost);
        EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
        server.startOver();
        server.welcome().receiveFrame().send(replyFrame(1, u"again"));
        ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
        EXPECT_EQ(execute(), Status::kSuccess);
        EXPECT_EQ(reply, u"again");
    }

    ScriptedServer server;
    std::unique_ptr<Client::EndpointClient> client = server.makeClient();
    WideString reply = u"untouched";
};

TEST_F(ClientConversation, SendsExactlyTheFramesOfTheProtocol) {
    server.welcome().receiveFrame().send(replyFrame(1, u"first"));
    server.receiveFrame().send(replyFrame(2, u"second"));
    ASSERT_EQ(client->OpenConnection(u"argument"), Status::kSuccess);
    ASSERT_EQ(client->ExecuteCommand(u"TA", 5, u"one", reply), Status::kSuccess);
    EXPECT_EQ(reply, u"first");
    ASSERT_EQ(client->ExecuteCommand(u"", 0, u"", reply), Status::kSuccess);
    EXPECT_EQ(reply, u"second");
    EXPECT_EQ(client->CloseConnection(), Status::kSuccess);
    EXPECT_EQ(server.received(), helloFrame(u"argument") +
                                     frame(Wire::FrameType::kCommand, 1, 5, u"TA", u"one") +
                                     frame(Wire::FrameType::kCommand, 2, 0, u"", u""));
    EXPECT_EQ(server.elapsed(), milliseconds(0));
}

TEST_F(ClientConversation, ReadsAReplyThatComesByteByByte) {
    server.welcome().receiveFrame();
    for (const char byte : replyFrame(1, u"slowly")) {
        server.send(std::string(1, byte)).pause(milliseconds(100));
    }
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"slowly");
}

TEST_F(ClientConversation, ReadsAnEmptyReply) {
    server.welcome().receiveFrame().send(replyFrame(1, u""));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"");
}

TEST_F(ClientConversation, PassesTheServersStatusOnAndStaysOpen) {
    server.welcome().receiveFrame().send(errorFrame(1, 50));
    server.receiveFrame().send(errorFrame(2, 0x80070005)).receiveFrame().send(replyFrame(3, u"ok"));
    open();
    EXPECT_EQ(execute(), 50);
    EXPECT_EQ(execute(), static_cast<std::int32_t>(0x80070005));
    EXPECT_EQ(reply, u"untouched");
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"ok");
}

TEST_F(ClientConversation, RefusesTooLongTextsWithoutSendingAndStaysOpen) {
    server.welcome(8);
    open();
    EXPECT_EQ(execute(u"12345"), Status::kTextTooLong);
    EXPECT_EQ(client->ExecuteCommand(WideString(4097, u't'), 0, u"", reply), Status::kTextTooLong);
    EXPECT_EQ(reply, u"untouched");
    server.receiveFrame().send(replyFrame(1, u"good"));
    EXPECT_EQ(client->ExecuteCommand(WideString(4096, u't'), 0, u"1234", reply), Status::kSuccess);
    EXPECT_EQ(server.received(), helloFrame() + frame(Wire::FrameType::kCommand, 1, 0,
                                                      WideString(4096, u't'), u"1234"));
}

TEST_F(ClientConversation, RefusesATooLongArgumentWithoutConnecting) {
    server.welcome();
    EXPECT_EQ(client->OpenConnection(WideString(4097, u'a')), Status::kTextTooLong);
    EXPECT_EQ(execute(), Status::kConnectionLost);
    EXPECT_EQ(client->OpenConnection(WideString(4096, u'a')), Status::kSuccess);
}

TEST_F(ClientConversation, AServerThatTakesNothingStillTakesAnEmptyCommand) {
    server.welcome(0).receiveFrame().send(replyFrame(1, u""));
    open();
    EXPECT_EQ(execute(u"x"), Status::kTextTooLong);
    EXPECT_EQ(execute(u""), Status::kSuccess);
}

TEST_F(ClientConversation, IsSafeInAnyOrderOfUse) {
    EXPECT_EQ(execute(), Status::kConnectionLost);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
    server.welcome();
    open();
    EXPECT_EQ(client->CloseConnection(), Status::kSuccess);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
    EXPECT_EQ(execute(), Status::kConnectionLost);
    EXPECT_EQ(reply, u"untouched");
}

TEST_F(ClientConversation, OpeningAnewClosesTheEarlierConnection) {
    server.welcome().welcome().receiveFrame().send(replyFrame(1, u"new"));
    open();
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"new");
}

TEST_F(ClientConversation, CanBeOpenedAgainAfterAFailure) {
    server.welcome().receiveFrame().close();
    server.welcome().receiveFrame().send(replyFrame(1, u"second try"));
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"second try");
}

// Deadlines.

TEST_F(ClientConversation, GivesUpAServerThatDoesNotGreetAfterTenSeconds) {
    server.accept();
    EXPECT_EQ(client->OpenConnection(u""), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(10));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, GivesUpASilentServerAfterTenSeconds) {
    server.welcome().receiveFrame();
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(10));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, GivesUpAServerThatStopsInMidReplyAfterTenSeconds) {
    server.welcome()
        .receiveFrame()
        .pause(seconds(5))
        .send(replyFrame(1, u"never finished").substr(0, 50));
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(15));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, GivesUpAServerThatDoesNotReadAfterTenSeconds) {
    server.welcome();
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(10));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, GivesUpATrickleOfAnAnswerAfterSixtySeconds) {
    server.welcome().receiveFrame().forever().pause(seconds(9)).send("O");
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(60));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, GivesUpATrickleInTheBodyAfterSixtySeconds) {
    server.welcome().receiveFrame().send(replyFrame(1, WideString(10'000, u'x')).substr(0, 32));
    server.forever().pause(seconds(9)).send("x");
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(60));
}

TEST_F(ClientConversation, GivesUpAServerThatReadsInATrickleAfterSixtySeconds) {
    server.welcome().forever().pause(seconds(9)).receive(200'000);
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(60));
}

TEST_F(ClientConversation, GivesUpAnEndlessStreamWithoutEverWaitingAfterSixtySeconds) {
    server.welcome().receiveFrame();
    std::string endless = replyFrame(1, u"");
    endless[27] = 0x20;  // a body of 512 MiB
    server.send(endless).forever().send(std::string(4096, 'x'));
    open();
    server.slowClock(milliseconds(100));
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_GE(server.elapsed(), seconds(60));
    EXPECT_LT(server.elapsed(), seconds(61));
}

TEST_F(ClientConversation, GivesUpACommandThatAlwaysMovesAfterSixtySeconds) {
    server.welcome().forever().receive(200'000);
    open();
    server.slowClock(seconds(2));
    EXPECT_EQ(execute(WideString(8'000'000, u'x')), Status::kTimeout);
    EXPECT_GE(server.elapsed(), seconds(60));
    EXPECT_LT(server.elapsed(), seconds(70));
}

TEST_F(ClientConversation, WaitsAsLongAsTheServerSaysThatItIsWorking) {
    server.welcome().receiveFrame();
    for (int i = 0; i < 300; ++i) {
        server.pause(seconds(2)).send(progressFrame(1));
    }
    server.send(replyFrame(1, u"done"));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"done");
    EXPECT_EQ(server.elapsed(), seconds(600));
}

TEST_F(ClientConversation, GivesUpAServerThatStopsWorkingAfterTenSeconds) {
    server.welcome().receiveFrame();
    for (int i = 0; i < 100; ++i) {
        server.pause(seconds(2)).send(progressFrame(1));
    }
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(210));
}

TEST_F(ClientConversation, GivesUpEndlessProgressAfterAnHour) {
    server.welcome().receiveFrame().forever().pause(seconds(2)).send(progressFrame(1));
    open();
    EXPECT_EQ(execute(), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), hours(1));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, WaitsForAGreetingAsLongAsTheServerSaysThatItIsWorking) {
    server.accept().receiveFrame();
    for (int i = 0; i < 40; ++i) {
        server.pause(seconds(2)).send(progressFrame(0));
    }
    server.send(welcomeFrame());
    EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
}

TEST_F(ClientConversation, EachOperationHasItsOwnDeadlines) {
    server.welcome();
    for (std::uint32_t id = 1; id <= 10; ++id) {
        server.receiveFrame().pause(seconds(9)).send(replyFrame(id, u"late"));
    }
    open();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(execute(), Status::kSuccess);
    }
    EXPECT_EQ(server.elapsed(), seconds(90));
}

// Lost connections.

TEST_F(ClientConversation, ReportsAConnectionClosedBeforeTheGreeting) {
    server.accept().close();
    EXPECT_EQ(client->OpenConnection(u""), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsAConnectionClosedAfterTheGreeting) {
    server.welcome();
    open();
    server.closeNow();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsAConnectionClosedInMidCommand) {
    server.welcome().receive(100'000).close();
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsAConnectionClosedInMidHeader) {
    server.welcome().receiveFrame().send(replyFrame(1, u"text").substr(0, 31)).close();
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsAConnectionClosedInMidReply) {
    const std::string whole = replyFrame(1, u"text");
    server.welcome().receiveFrame().send(whole.substr(0, whole.size() - 1)).close();
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsALieAboutTheLengthOfAReply) {
    std::string lie = replyFrame(1, u"text");
    lie[24] = 0;
    lie[27] = 0x40;  // a body of 1 GiB
    server.welcome().receiveFrame().send(lie).close();
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

// Refusals in the middle of sending.

TEST_F(ClientConversation, HearsARefusalWhileItIsStillSending) {
    server.welcome().receive(100'000).send(errorFrame(1, 14));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), 14);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, HearsARefusalThatComesInPiecesWhileItIsStillSending) {
    const std::string refusal = errorFrame(1, 14);
    server.welcome().receive(100'000).send(refusal.substr(0, 20)).receive(300'000);
    server.send(refusal.substr(20));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), 14);
}

TEST_F(ClientConversation, HearsARefusalWhoseSenderHasGone) {
    server.welcome().receive(100'000).send(errorFrame(1, 14)).close();
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), 14);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, HearsARefusalThatWaitedForTheCommand) {
    server.welcome().send(errorFrame(1, 14)).close();
    open();
    server.proceed();
    EXPECT_EQ(execute(), 14);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, HearsARefusalOfItsGreeting) {
    server.accept().receiveFrame().send(errorFrame(0, Status::kServerTooBusy)).close();
    EXPECT_EQ(client->OpenConnection(u""), Status::kServerTooBusy);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ARefusalInMidCommandClosesTheConnection) {
    server.welcome().receive(100'000).send(errorFrame(1, 14)).receive(1'000'000);
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), 14);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
}

TEST_F(ClientConversation, AnythingButARefusalInMidCommandIsOutOfTurn) {
    server.welcome().receive(100'000).send(replyFrame(1, u"too early"));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, u'x')), Status::kProtocolError);
    expectClosedAndUsableAgain();
}

// Frames that are none.

struct BadAnswer {
    const char* name;
    std::string bytes;
};

void PrintTo(const BadAnswer& answer, std::ostream* to) { *to << answer.name; }

std::string nameOf(const testing::TestParamInfo<BadAnswer>& info) { return info.param.name; }

class MalformedAnswer : public ClientConversation, public testing::WithParamInterface<BadAnswer> {};

TEST_P(MalformedAnswer, ToACommandIsAProtocolError) {
    server.welcome(100).receiveFrame().send(GetParam().bytes);
    open();
    EXPECT_EQ(execute(), Status::kProtocolError);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
    expectClosedAndUsableAgain();
}

INSTANTIATE_TEST_SUITE_P(
    Frames, MalformedAnswer,
    testing::Values(BadAnswer{"WrongMagic", with(replyFrame(1, u"x"), 0, 'X')},
                    BadAnswer{"Text", "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n"},
                    BadAnswer{"Zeroes", std::string(64, '\0')},
                    BadAnswer{"WrongVersion", with(replyFrame(1, u"x"), 4, 2)},
                    BadAnswer{"UnknownType", with(replyFrame(1, u"x"), 5, 7)},
                    BadAnswer{"WrongHeaderLength", with(replyFrame(1, u"x"), 6, 40)},
                    BadAnswer{"Flags", with(replyFrame(1, u"x"), 20, 1)},
                    BadAnswer{"EarlierId", replyFrame(0, u"x")},
                    BadAnswer{"LaterId", replyFrame(2, u"x")},
                    BadAnswer{"ErrorWithAnotherId", errorFrame(2, 5)},
                    BadAnswer{"ProgressWithAnotherId", progressFrame(2)},
                    BadAnswer{"OddLength", with(replyFrame(1, u"x"), 24, 1)},
                    BadAnswer{"MoreThanAnnounced", replyFrame(1, WideString(51, u'x'))},
                    BadAnswer{"OversizedLength", with(replyFrame(1, u"x"), 31, 0x7F)},
                    BadAnswer{"Target", frame(Wire::FrameType::kReply, 1, 0, u"TA", u"x")},
                    BadAnswer{"ErrorThatIsNone", errorFrame(1, 0)},
                    BadAnswer{"Command", commandFrame(1, u"x")}, BadAnswer{"Hello", helloFrame()},
                    BadAnswer{"Welcome", welcomeFrame(100)}),
    nameOf);

class MalformedGreeting : public ClientConversation,
                          public testing::WithParamInterface<BadAnswer> {};

TEST_P(MalformedGreeting, IsAProtocolError) {
    server.accept().receiveFrame().send(GetParam().bytes);
    EXPECT_EQ(client->OpenConnection(u""), Status::kProtocolError);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
    expectClosedAndUsableAgain();
}

INSTANTIATE_TEST_SUITE_P(
    Frames, MalformedGreeting,
    testing::Values(BadAnswer{"Reply", replyFrame(1, u"x")}, BadAnswer{"Hello", helloFrame()},
                    BadAnswer{"WrongMagic", with(welcomeFrame(), 3, 'X')},
                    BadAnswer{"WrongVersion", with(welcomeFrame(), 4, 2)},
                    BadAnswer{"WrongId", with(welcomeFrame(), 8, 1)},
                    BadAnswer{"ErrorWithAnotherId", errorFrame(1, 5)},
                    BadAnswer{"MoreThanAGibibyte", welcomeFrame(Wire::kLargestBody + 1)},
                    BadAnswer{"Body", frame(Wire::FrameType::kWelcome, 0, 100, {}, u"x")}),
    nameOf);

TEST_F(ClientConversation, WhatComesBeyondAReplyIsOutOfTurn) {
    server.welcome().receiveFrame().send(replyFrame(1, u"first") + replyFrame(1, u"again"));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, u"first");
    EXPECT_EQ(execute(), Status::kProtocolError);
    EXPECT_EQ(reply, u"first");
    EXPECT_EQ(execute(), Status::kConnectionLost);
}

TEST_F(ClientConversation, ALargestReplyIsAsLongAsAnnounced) {
    server.welcome(100).receiveFrame().send(replyFrame(1, WideString(50, u'x')));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, WideString(50, u'x'));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
