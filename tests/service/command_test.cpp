#include "service/command.h"

#include <gtest/gtest.h>

namespace Orvel::Service {
namespace {

void expectSplit(WideStringView text, WideStringView connected, WideStringView application,
                 WideStringView token, WideStringView payload) {
    const auto command = splitCommand(text, connected);
    ASSERT_TRUE(command);
    EXPECT_EQ(command->application, application);
    EXPECT_EQ(command->token, token);
    EXPECT_EQ(command->payload, payload);
}

TEST(CommandTest, TakesTheNameTheTokenAndThePayloadApart) {
    expectSplit(u"MyApp::CONNECT_APP::", u"", u"MyApp", u"::CONNECT_APP::", u"");
    expectSplit(u"MyApp::COLLECT_DATACLASS::{}", u"MyApp", u"MyApp", u"::COLLECT_DATACLASS::",
                u"{}");
}

TEST(CommandTest, HandshakeNameMayHoldColonsAndTokens) {
    expectSplit(u"a::b::REGISTER_DATACLASS::::CONNECT_APP::", u"", u"a::b::REGISTER_DATACLASS::",
                u"::CONNECT_APP::", u"");
    expectSplit(u"x::CONNECT_APP::::CONNECT_APP::", u"", u"x::CONNECT_APP::", u"::CONNECT_APP::",
                u"");
}

TEST(CommandTest, KnownNameIsMatchedWholeBeforeTokensAreSought) {
    expectSplit(u"a::COLLECT_DATACLASS::b::REGISTER_DATACLASS::{}", u"a::COLLECT_DATACLASS::b",
                u"a::COLLECT_DATACLASS::b", u"::REGISTER_DATACLASS::", u"{}");
    expectSplit(u"::x:::COLLECT_DATACLASS::{}", u"::x:", u"::x:", u"::COLLECT_DATACLASS::", u"{}");
}

TEST(CommandTest, TokensInAPayloadArePayload) {
    expectSplit(u"a::COLLECT_DATACLASS::{\"k\":\"::CONNECT_APP::", u"a", u"a",
                u"::COLLECT_DATACLASS::", u"{\"k\":\"::CONNECT_APP::");
    expectSplit(u"a::REGISTER_DATACLASS::x::COLLECT_DATACLASS::", u"", u"a",
                u"::REGISTER_DATACLASS::", u"x::COLLECT_DATACLASS::");
}

TEST(CommandTest, NameThatGoesOnIsAnotherName) {
    expectSplit(u"MyApps::COLLECT_DATACLASS::{}", u"MyApp", u"MyApps", u"::COLLECT_DATACLASS::",
                u"{}");
    expectSplit(u"My::App::COLLECT_DATACLASS::{}", u"My", u"My::App", u"::COLLECT_DATACLASS::",
                u"{}");
    expectSplit(u"My::APP::COLLECT_DATACLASS::{}", u"My", u"My::APP", u"::COLLECT_DATACLASS::",
                u"{}");
    expectSplit(u"My::CONNECT_APP::::CONNECT_APP::", u"My", u"My::CONNECT_APP::",
                u"::CONNECT_APP::", u"");
}

TEST(CommandTest, UnknownTokenIsFoundByItsColons) {
    expectSplit(u"MyApp::NEW_THING::{}", u"MyApp", u"MyApp", u"::NEW_THING::", u"{}");
    expectSplit(u"MyApp::nonsense::{}", u"MyApp", u"MyApp", u"::nonsense::", u"{}");
    expectSplit(u"MyApp::NEW_THING::{}", u"", u"MyApp", u"::NEW_THING::", u"{}");
    expectSplit(u"::::", u"", u"", u"::::", u"");
}

TEST(CommandTest, KnownNameIsMatchedWholeBeforeAnUnknownToken) {
    expectSplit(u"a::b::NEW_THING::{}", u"a::b", u"a::b", u"::NEW_THING::", u"{}");
}

TEST(CommandTest, TextWithoutATokenIsNoCommand) {
    EXPECT_FALSE(splitCommand(u"", u""));
    EXPECT_FALSE(splitCommand(u"MyApp", u"MyApp"));
    EXPECT_FALSE(splitCommand(u"MyApp::COLLECT_DATACLASS:", u"MyApp"));
    EXPECT_FALSE(splitCommand(u":::", u""));
}

}  // namespace
}  // namespace Orvel::Service
