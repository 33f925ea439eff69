#include "channel/reply.h"

#include <gtest/gtest.h>

#include "orvel/analytics/hresult_error.h"

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::Analytics::hresult_error;
using Orvel::Analytics::Channel::parseServiceReply;

int parsed(WideStringView reply) { return static_cast<int>(parseServiceReply(reply)); }

/// A reply of MyApp's that has the word of an error and these elements of "Results".
WideString reply(WideStringView results) {
    return WideString(ORVEL_TEXT("MyApp::COLLECT_DATACLASS::{\"ErrorCode\":0,\"Results\":[")) +
           WideString(results) + ORVEL_TEXT("]}");
}

TEST(ParseServiceReply, TakesAReplyWithoutTheWordForASuccess) {
    EXPECT_EQ(parsed(ORVEL_TEXT("")), 0);
    EXPECT_EQ(parsed(ORVEL_TEXT("MyApp::SUCCESS::")), 0);
    EXPECT_EQ(parsed(ORVEL_TEXT("QuotaExceeded")), 0);
    EXPECT_EQ(parsed(ORVEL_TEXT("errorcode :QuotaExceeded")), 0);
    EXPECT_EQ(parsed(ORVEL_TEXT("{ not JSON")), 0);
}

TEST(ParseServiceReply, ReadsTheErrorOfItsOnlyElement) {
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("\"ErrorCode :QuotaExceeded\""))), 24);
}

TEST(ParseServiceReply, LetsTheLastElementDecide) {
    EXPECT_EQ(
        parsed(reply(ORVEL_TEXT("\"ErrorCode :QuotaExceeded\",\"ErrorCode :MalformedJson\""))), 15);
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("\"ErrorCode :QuotaExceeded\",\"fine\""))), 1);
}

TEST(ParseServiceReply, RemovesWhatPrecedesTheFirstColonOfAnElement) {
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("\"MalformedJson:QuotaExceeded\""))), 24);
}

TEST(ParseServiceReply, NeverForgetsWhatPrecededTheErrorBetweenElements) {
    // What was gathered when the last element is reached is `"a:"MalformedJson:`, which does not
    // occur in it: it keeps both names, and the earlier of the table decides.
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("\"a:b\",\"MalformedJson:QuotaExceeded\""))), 15);
}

TEST(ParseServiceReply, AddsTheWholeTextOfAnElementWithoutAColon) {
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("\"a\",\"MalformedJson:QuotaExceeded\""))), 15);
}

TEST(ParseServiceReply, StripsTheFramingUpToTheFourthColon) {
    EXPECT_EQ(parsed(ORVEL_TEXT("a:b:c:d:{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")), 24);
    EXPECT_EQ(parsed(ORVEL_TEXT("::::{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")), 24);
}

TEST(ParseServiceReply, StripsNothingWithFewerThanFourColons) {
    EXPECT_EQ(parsed(ORVEL_TEXT("{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")), 24);
    EXPECT_THROW(parsed(ORVEL_TEXT("a:{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")),
                 hresult_error);
}

TEST(ParseServiceReply, StripsAtTheWrongPointWhenTheApplicationsNameHasAColon) {
    // One colon in the name leaves a colon before the object, which cannot be parsed.
    EXPECT_THROW(parsed(ORVEL_TEXT("My:App::COLLECT_DATACLASS::"
                                   "{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")),
                 hresult_error);
}

TEST(ParseServiceReply, RaisesForAnErrorThatCannotBeRead) {
    for (const WideStringView text :
         {ORVEL_TEXT("ErrorCode"), ORVEL_TEXT("MyApp::ACK::ErrorCode"),
          ORVEL_TEXT("MyApp::ACK::[\"ErrorCode\"]"), ORVEL_TEXT("MyApp::ACK::{\"ErrorCode\":1}"),
          ORVEL_TEXT("MyApp::ACK::{\"Results\":\"ErrorCode\"}")}) {
        EXPECT_THROW(parsed(text), hresult_error) << testing::PrintToString(WideString(text));
    }
}

TEST(ParseServiceReply, GivesGenericErrorForNoElementAtAll) {
    EXPECT_EQ(parsed(ORVEL_TEXT("MyApp::ACK::{\"Results\":[],\"ErrorCode\":1}")), 1);
}

TEST(ParseServiceReply, ReadsElementsOfAnyType) {
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("\"ErrorCode\",5"))), 1);
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("{\"ErrorCode\":\"QuotaExceeded\"}"))), 24);
    EXPECT_EQ(parsed(reply(ORVEL_TEXT("[\"ErrorCode :QuotaExceeded\"]"))), 24);
}

}  // namespace
