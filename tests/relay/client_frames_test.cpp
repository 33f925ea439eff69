#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/relay/client_conversation.h"

/// A server whose answers are no frames of the protocol, or come out of turn.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;

using ClientFrames = ClientConversation;

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
    testing::Values(
        BadAnswer{"WrongMagic", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 0, 'X')},
        BadAnswer{"Text", "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n"},
        BadAnswer{"Zeroes", std::string(64, '\0')},
        BadAnswer{"WrongVersion", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 4, 2)},
        BadAnswer{"UnknownType", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 5, 7)},
        BadAnswer{"WrongHeaderLength", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 6, 40)},
        BadAnswer{"ZeroHeaderLength", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 6, 0)},
        BadAnswer{"Flags", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 20, 1)},
        BadAnswer{"EarlierId", replyFrame(0, ORVEL_RELAY_TEXT("x"))},
        BadAnswer{"LaterId", replyFrame(2, ORVEL_RELAY_TEXT("x"))},
        BadAnswer{"ErrorWithAnotherId", errorFrame(2, 5)},
        BadAnswer{"ProgressWithAnotherId", progressFrame(2)},
        BadAnswer{"OddLength", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 24, 1)},
        BadAnswer{"MoreThanAnnounced", replyFrame(1, WideString(51, ORVEL_RELAY_TEXT('x')))},
        BadAnswer{"OversizedLength", with(replyFrame(1, ORVEL_RELAY_TEXT("x")), 31, 0x7F)},
        BadAnswer{"Target", frame(Wire::FrameType::kReply, 1, 0, ORVEL_RELAY_TEXT("TA"),
                                  ORVEL_RELAY_TEXT("x"))},
        BadAnswer{"ErrorThatIsNone", errorFrame(1, 0)},
        BadAnswer{"Command", commandFrame(1, ORVEL_RELAY_TEXT("x"))},
        BadAnswer{"Hello", helloFrame()}, BadAnswer{"Welcome", welcomeFrame(100)}),
    nameOf);

class MalformedGreeting : public ClientConversation,
                          public testing::WithParamInterface<BadAnswer> {};

TEST_P(MalformedGreeting, IsAProtocolError) {
    server.accept().receiveFrame().send(GetParam().bytes);
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kProtocolError);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
    expectClosedAndUsableAgain();
}

INSTANTIATE_TEST_SUITE_P(Frames, MalformedGreeting,
                         testing::Values(BadAnswer{"Reply", replyFrame(1, ORVEL_RELAY_TEXT("x"))},
                                         BadAnswer{"Hello", helloFrame()},
                                         BadAnswer{"WrongMagic", with(welcomeFrame(), 3, 'X')},
                                         BadAnswer{"WrongVersion", with(welcomeFrame(), 4, 2)},
                                         BadAnswer{"WrongId", with(welcomeFrame(), 8, 1)},
                                         BadAnswer{"ErrorWithAnotherId", errorFrame(1, 5)},
                                         BadAnswer{"MoreThanAGibibyte",
                                                   welcomeFrame(Wire::kLargestBody + 1)},
                                         BadAnswer{"Body", frame(Wire::FrameType::kWelcome, 0, 100,
                                                                 {}, ORVEL_RELAY_TEXT("x"))}),
                         nameOf);

TEST_F(ClientFrames, WhatComesBeyondAReplyIsOutOfTurn) {
    server.welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("first")) +
                                         replyFrame(1, ORVEL_RELAY_TEXT("again")));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("first"));
    EXPECT_EQ(execute(), Status::kProtocolError);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("first"));
    EXPECT_EQ(execute(), Status::kConnectionLost);
}

TEST_F(ClientFrames, WhatComesAfterAReplyOfLengthZeroIsOutOfTurn) {
    server.welcome().receiveFrame().send(
        with(replyFrame(1, WideString(20, ORVEL_RELAY_TEXT('x'))), 24, 0));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT(""));
    reply = ORVEL_RELAY_TEXT("untouched");
    EXPECT_EQ(execute(), Status::kProtocolError);
    expectClosedAndUsableAgain();
}

TEST_F(ClientFrames, ALargestReplyIsAsLongAsAnnounced) {
    server.welcome(100).receiveFrame().send(replyFrame(1, WideString(50, ORVEL_RELAY_TEXT('x'))));
    open();
    EXPECT_EQ(execute(), Status::kSuccess);
    EXPECT_EQ(reply, WideString(50, ORVEL_RELAY_TEXT('x')));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
