#include "tests/relay/client_conversation.h"

#include <gtest/gtest.h>

/// The client's side of a conversation with a server that keeps to the protocol, or goes away.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;

TEST_F(ClientConversation, SendsExactlyTheFramesOfTheProtocol) {
    server.welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("first")));
    server.receiveFrame().send(replyFrame(2, ORVEL_RELAY_TEXT("second")));
    ASSERT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("argument")), Status::kSuccess);
    ASSERT_EQ(client->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 5, ORVEL_RELAY_TEXT("one"), reply),
              Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("first"));
    ASSERT_EQ(client->ExecuteCommand(ORVEL_RELAY_TEXT(""), 0, ORVEL_RELAY_TEXT(""), reply),
              Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("second"));
    EXPECT_EQ(client->CloseConnection(), Status::kSuccess);
    EXPECT_EQ(server.received(), helloFrame(ORVEL_RELAY_TEXT("argument")) +
                                     frame(Wire::FrameType::kCommand, 1, 5, ORVEL_RELAY_TEXT("TA"),
                                           ORVEL_RELAY_TEXT("one")) +
                                     frame(Wire::FrameType::kCommand, 2, 0, ORVEL_RELAY_TEXT(""),
                                           ORVEL_RELAY_TEXT("")));
    EXPECT_EQ(server.elapsed(), milliseconds(0));
}

TEST_F(ClientConversation, ReadsAReplyThatComesByteByByte) {
    server.welcome().receiveFrame();
    for (const char byte : replyFrame(1, ORVEL_RELAY_TEXT("slowly"))) {
        server.send(std::string(1, byte)).pause(milliseconds(100));
    }
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("slowly"));
}

TEST_F(ClientConversation, ReadsAnEmptyReply) {
    server.welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("")));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT(""));
}

TEST_F(ClientConversation, PassesTheServersStatusOnAndStaysOpen) {
    server.welcome().receiveFrame().send(errorFrame(1, 50));
    server.receiveFrame()
        .send(errorFrame(2, 0x80070005))
        .receiveFrame()
        .send(replyFrame(3, ORVEL_RELAY_TEXT("ok")));
    open();
    EXPECT_EQ(execute(), 50);
    EXPECT_EQ(execute(), static_cast<std::int32_t>(0x80070005));
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("untouched"));
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("ok"));
}

TEST_F(ClientConversation, RefusesTooLongTextsWithoutSendingAndStaysOpen) {
    server.welcome(8);
    open();
    EXPECT_EQ(execute(ORVEL_RELAY_TEXT("12345")), Status::kTextTooLong);
    EXPECT_EQ(client->ExecuteCommand(WideString(4097, ORVEL_RELAY_TEXT('t')), 0,
                                     ORVEL_RELAY_TEXT(""), reply),
              Status::kTextTooLong);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("untouched"));
    server.receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("good")));
    EXPECT_EQ(client->ExecuteCommand(WideString(4096, ORVEL_RELAY_TEXT('t')), 0,
                                     ORVEL_RELAY_TEXT("1234"), reply),
              Status::kSuccess);
    EXPECT_EQ(server.received(), helloFrame() + frame(Wire::FrameType::kCommand, 1, 0,
                                                      WideString(4096, ORVEL_RELAY_TEXT('t')),
                                                      ORVEL_RELAY_TEXT("1234")));
}

TEST_F(ClientConversation, RefusesATooLongArgumentWithoutConnecting) {
    server.welcome();
    EXPECT_EQ(client->OpenConnection(WideString(4097, ORVEL_RELAY_TEXT('a'))),
              Status::kTextTooLong);
    EXPECT_EQ(execute(), Status::kConnectionLost);
    EXPECT_EQ(client->OpenConnection(WideString(4096, ORVEL_RELAY_TEXT('a'))), Status::kSuccess);
}

TEST_F(ClientConversation, AServerThatTakesNothingStillTakesAnEmptyCommand) {
    server.welcome(0).receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("")));
    open();
    EXPECT_EQ(execute(ORVEL_RELAY_TEXT("x")), Status::kTextTooLong);
    EXPECT_EQ(execute(ORVEL_RELAY_TEXT("")), Status::kSuccess);
}

TEST_F(ClientConversation, IsSafeInAnyOrderOfUse) {
    EXPECT_EQ(execute(), Status::kConnectionLost);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
    server.welcome();
    open();
    EXPECT_EQ(client->CloseConnection(), Status::kSuccess);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
    EXPECT_EQ(execute(), Status::kConnectionLost);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("untouched"));
}

TEST_F(ClientConversation, OpeningAnewClosesTheEarlierConnection) {
    server.welcome().welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("new")));
    open();
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("new"));
}

TEST_F(ClientConversation, CanBeOpenedAgainAfterAFailure) {
    server.welcome().receiveFrame().close();
    server.welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("second try")));
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("second try"));
}

// Lost connections.

TEST_F(ClientConversation, ReportsAConnectionClosedBeforeTheGreeting) {
    server.accept().close();
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kConnectionLost);
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
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsAConnectionClosedInMidHeader) {
    server.welcome()
        .receiveFrame()
        .send(replyFrame(1, ORVEL_RELAY_TEXT("text")).substr(0, 31))
        .close();
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsAConnectionClosedInMidReply) {
    const std::string whole = replyFrame(1, ORVEL_RELAY_TEXT("text"));
    server.welcome().receiveFrame().send(whole.substr(0, whole.size() - 1)).close();
    open();
    EXPECT_EQ(execute(), Status::kConnectionLost);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ReportsALieAboutTheLengthOfAReply) {
    std::string lie = replyFrame(1, ORVEL_RELAY_TEXT("text"));
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
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), 14);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, HearsARefusalThatComesInPiecesWhileItIsStillSending) {
    const std::string refusal = errorFrame(1, 14);
    server.welcome().receive(100'000).send(refusal.substr(0, 20)).receive(300'000);
    server.send(refusal.substr(20));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), 14);
}

TEST_F(ClientConversation, HearsARefusalWhoseSenderHasGone) {
    server.welcome().receive(100'000).send(errorFrame(1, 14)).close();
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), 14);
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
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kServerTooBusy);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ARefusalInMidCommandClosesTheConnection) {
    server.welcome().receive(100'000).send(errorFrame(1, 14)).receive(1'000'000);
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), 14);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
}

TEST_F(ClientConversation, AnythingButARefusalInMidCommandIsOutOfTurn) {
    server.welcome().receive(100'000).send(replyFrame(1, ORVEL_RELAY_TEXT("too early")));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), Status::kProtocolError);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ProgressInMidCommandIsOutOfTurn) {
    server.welcome().receive(100'000).send(progressFrame(1));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), Status::kProtocolError);
    expectClosedAndUsableAgain();
}

TEST_F(ClientConversation, ARefusalOfAnotherCommandInMidCommandIsOutOfTurn) {
    server.welcome().receive(100'000).send(errorFrame(2, 14));
    open();
    EXPECT_EQ(execute(WideString(4'000'000, ORVEL_RELAY_TEXT('x'))), Status::kProtocolError);
    expectClosedAndUsableAgain();
}

}  // namespace
}  // namespace Orvel::Relay::Testing
