#include "channel/service_channel.h"

#include <gtest/gtest.h>

#include <new>

#include "channel/tokens.h"
#include "orvel/analytics/hresult_error.h"
#include "orvel/analytics/testing/scripted_endpoint.h"

namespace {

using namespace Orvel::Analytics::Channel;
using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::Analytics::hresult_error;
using Orvel::Analytics::Testing::Executed;
using Orvel::Analytics::Testing::ScriptedEndpoint;

constexpr WideStringView kApp = ORVEL_TEXT("MyApp");

/// A command as a function of nothing but the channel: its result as a number, its output dropped.
struct Command {
    const char* name;
    int (*run)();
    WideStringView text;
};

void PrintTo(const Command& command, std::ostream* out) { *out << command.name; }

int runRegister() {
    ServiceChannel channel = getServiceClient();
    return static_cast<int>(registerCommand(channel, kApp, ORVEL_TEXT("{1}")));
}
int runCollect() {
    ServiceChannel channel = getServiceClient();
    return static_cast<int>(collectCommand(channel, kApp, ORVEL_TEXT("{2}")));
}
int runGetConsent() {
    ServiceChannel channel = getServiceClient();
    WideString consent;
    return static_cast<int>(getConsentCommand(channel, kApp, consent));
}
int runSetConsent() {
    ServiceChannel channel = getServiceClient();
    return static_cast<int>(setConsentCommand(channel, kApp, ORVEL_TEXT("{3}")));
}
int runGetPrivacyDocuments() {
    ServiceChannel channel = getServiceClient();
    WideString documents;
    return static_cast<int>(getPrivacyDocumentsCommand(channel, kApp, documents));
}

const Command kRegister{"Register", runRegister, ORVEL_TEXT("MyApp::REGISTER_DATACLASS::{1}")};
const Command kCollect{"Collect", runCollect, ORVEL_TEXT("MyApp::COLLECT_DATACLASS::{2}")};
const Command kGetConsent{"GetConsent", runGetConsent, ORVEL_TEXT("MyApp::GET_CONSENT::")};
const Command kSetConsent{"SetConsent", runSetConsent, ORVEL_TEXT("MyApp::SET_CONSENT::{3}")};
const Command kGetPrivacyDocuments{"GetPrivacyDocuments", runGetPrivacyDocuments,
                                   ORVEL_TEXT("MyApp::GET_PRIVACY_DOCUMENTS::")};

const WideString kAcknowledged = ORVEL_TEXT("MyApp::ACK::");
const WideString kQuotaExceeded =
    ORVEL_TEXT("MyApp::X::{\"Results\":[\"ErrorCode :QuotaExceeded\"]}");
const WideString kUnreadable = ORVEL_TEXT("MyApp::X::ErrorCode");

class EveryCommand : public testing::TestWithParam<Command> {
  protected:
    ScriptedEndpoint script;
};

class EveryCommandButCollect : public EveryCommand {};
class EveryCommandButRegister : public EveryCommand {};
class EveryCommandThatReadsItsReply : public EveryCommand {};

std::string nameOf(const testing::TestParamInfo<Command>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(, EveryCommand,
                         testing::Values(kRegister, kCollect, kGetConsent, kSetConsent,
                                         kGetPrivacyDocuments),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(, EveryCommandButCollect,
                         testing::Values(kRegister, kGetConsent, kSetConsent, kGetPrivacyDocuments),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(, EveryCommandButRegister,
                         testing::Values(kCollect, kGetConsent, kSetConsent, kGetPrivacyDocuments),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(, EveryCommandThatReadsItsReply,
                         testing::Values(kRegister, kCollect, kGetConsent, kSetConsent), nameOf);

TEST_P(EveryCommand, OpensShakesHandsSpeaksAndCloses) {
    EXPECT_EQ(GetParam().run(), 0);
    ASSERT_EQ(script.endpoints.size(), 1U);
    EXPECT_EQ(script.endpoints[0], ORVEL_TEXT("OrvelAnalyticsRpcEndpoint"));
    ASSERT_EQ(script.openArguments.size(), 1U);
    EXPECT_EQ(script.openArguments[0], ORVEL_TEXT(""));
    ASSERT_EQ(script.executed.size(), 2U);
    EXPECT_EQ(script.executed[0].command, ORVEL_TEXT("MyApp::CONNECT_APP::"));
    EXPECT_EQ(script.executed[1].command, GetParam().text);
    for (const Executed& executed : script.executed) {
        EXPECT_EQ(executed.target, ORVEL_TEXT("TA"));
        EXPECT_EQ(executed.argument, 0U);
    }
    EXPECT_EQ(script.closed, 1);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_P(EveryCommand, IgnoresTheStatusOfClosing) {
    script.closeStatus = 1726;
    EXPECT_EQ(GetParam().run(), 0);
}

TEST_P(EveryCommand, ClosesNothingThatCouldNotBeOpened) {
    script.openStatus = 1460;
    EXPECT_EQ(GetParam().run(), 1);
    EXPECT_TRUE(script.executed.empty());
    EXPECT_EQ(script.closed, 0);
}

TEST_P(EveryCommand, GivesGenericErrorWhenTheEndpointYieldsNoClient) {
    script.yieldsNoClient = true;
    EXPECT_EQ(GetParam().run(), 1);
}

TEST_P(EveryCommand, ClosesTheConnectionWhenTheClientRaises) {
    script.onExecute = [](const Executed&) { throw std::bad_alloc(); };
    EXPECT_THROW(GetParam().run(), std::bad_alloc);
    EXPECT_EQ(script.closed, 1);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_P(EveryCommand, DoesNotSpeakAfterAnotherAcknowledgementThanItsOwn) {
    for (const WideStringView reply :
         {ORVEL_TEXT("MyApp::ACK:: "), ORVEL_TEXT("myapp::ACK::"), ORVEL_TEXT("::ACK::"),
          ORVEL_TEXT(""), ORVEL_TEXT("MyApp::ACK::MyApp::ACK::")}) {
        script.executions = {{0, WideString(reply)}};
        script.executed.clear();
        GetParam().run();
        EXPECT_EQ(script.executed.size(), 1U);
    }
    EXPECT_EQ(script.closed, 5);
}

TEST_P(EveryCommand, DoesNotSpeakAfterAHandshakeThatWasNotDelivered) {
    script.executions = {{1726, kAcknowledged}};
    GetParam().run();
    EXPECT_EQ(script.executed.size(), 1U);
    EXPECT_EQ(script.closed, 1);
}

TEST_P(EveryCommandButCollect, TakesAFailedHandshakeWithoutAnErrorForASuccess) {
    for (const WideStringView reply : {ORVEL_TEXT("MyApp::ACK:: "), ORVEL_TEXT("")}) {
        script.executions = {{0, WideString(reply)}};
        script.executed.clear();
        EXPECT_EQ(GetParam().run(), 0);
    }
    script.executions = {{1726, std::nullopt}};
    script.executed.clear();
    EXPECT_EQ(GetParam().run(), 0);
}

TEST_P(EveryCommandButCollect, ReadsTheErrorOfARefusedHandshake) {
    script.executions = {{0, kQuotaExceeded}};
    EXPECT_EQ(GetParam().run(), 24);
}

TEST_P(EveryCommandButCollect, RaisesForARefusedHandshakeThatCannotBeRead) {
    script.executions = {{0, kUnreadable}};
    EXPECT_THROW(GetParam().run(), hresult_error);
    EXPECT_EQ(script.closed, 1);
}

TEST(CollectCommand, FailsWhenTheHandshakeDoesWhateverTheReply) {
    ScriptedEndpoint script;
    for (const WideString& reply :
         {WideString(), WideString(ORVEL_TEXT("MyApp::ACK:: ")), kQuotaExceeded, kUnreadable}) {
        script.executions = {{0, reply}};
        script.executed.clear();
        EXPECT_EQ(kCollect.run(), 1);
    }
}

TEST(RegisterCommand, TellsWhyTheConnectionCouldNotBeOpened) {
    ScriptedEndpoint script;
    const auto result = [&](std::int32_t status) {
        script.openStatus = status;
        return kRegister.run();
    };
    EXPECT_EQ(result(1722), 22);
    EXPECT_EQ(result(5), 32);
    EXPECT_EQ(result(1460), 1);
    EXPECT_EQ(result(-1), 1);
}

TEST_P(EveryCommandButRegister, GivesGenericErrorWhateverKeptTheConnectionFromOpening) {
    for (const std::int32_t status : {1722, 5, 1460, -1}) {
        script.openStatus = status;
        EXPECT_EQ(GetParam().run(), 1);
    }
}

TEST_P(EveryCommandThatReadsItsReply, ReadsTheErrorOfTheReply) {
    script.executions = {{0, kAcknowledged}, {0, kQuotaExceeded}};
    EXPECT_EQ(GetParam().run(), 24);
}

TEST_P(EveryCommandThatReadsItsReply, RaisesForAReplyThatCannotBeReadAndCloses) {
    script.executions = {{0, kAcknowledged}, {0, kUnreadable}};
    EXPECT_THROW(GetParam().run(), hresult_error);
    EXPECT_EQ(script.closed, 1);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST_P(EveryCommandThatReadsItsReply, GivesGenericErrorForACommandThatWasNotDelivered) {
    script.executions = {{0, kAcknowledged}, {1726, kQuotaExceeded}};
    EXPECT_EQ(GetParam().run(), 1);
    EXPECT_EQ(script.closed, 1);
}

TEST_P(EveryCommandThatReadsItsReply, GivesGenericErrorForAnErrorReplyWithoutElements) {
    script.executions = {{0, kAcknowledged},
                         {0, ORVEL_TEXT("MyApp::X::{\"Results\":[],\"ErrorCode\":1}")}};
    EXPECT_EQ(GetParam().run(), 1);
}

class ConsentCommand : public testing::Test {
  protected:
    int run() {
        ServiceChannel channel = getServiceClient();
        return static_cast<int>(getConsentCommand(channel, kApp, consent));
    }

    ScriptedEndpoint script;
    WideString consent = ORVEL_TEXT("before");
};

TEST_F(ConsentCommand, CutsTheRecordOutOfTheReply) {
    script.executions = {{0, kAcknowledged}, {0, ORVEL_TEXT("MyApp::CONSENT_RECORD::{\"a\":1}")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(consent, ORVEL_TEXT("{\"a\":1}"));
}

TEST_F(ConsentCommand, CutsAtTheFirstMarkOnly) {
    script.executions = {{0, kAcknowledged},
                         {0, ORVEL_TEXT("x::CONSENT_RECORD::y::CONSENT_RECORD::z")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(consent, ORVEL_TEXT("y::CONSENT_RECORD::z"));
}

TEST_F(ConsentCommand, PassesOnAReplyWithoutTheMarkWhole) {
    script.executions = {{0, kAcknowledged}, {0, ORVEL_TEXT("{\"a\":1}")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(consent, ORVEL_TEXT("{\"a\":1}"));
}

TEST_F(ConsentCommand, JudgesTheReplyBeforeItCuts) {
    // Cut first, the remainder would have no framing of four colons to strip.
    script.executions = {
        {0, kAcknowledged},
        {0, ORVEL_TEXT("MyApp::CONSENT_RECORD::{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")}};
    EXPECT_EQ(run(), 24);
    EXPECT_EQ(consent, ORVEL_TEXT("{\"Results\":[\"ErrorCode :QuotaExceeded\"]}"));
}

TEST_F(ConsentCommand, PassesOnTheHandshakesReplyWhenTheCommandWroteNone) {
    script.executions = {{0, kAcknowledged}, {1726, std::nullopt}};
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(consent, kAcknowledged);
}

TEST_F(ConsentCommand, WritesNothingWithoutAHandshake) {
    script.executions = {{0, ORVEL_TEXT("no")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(consent, ORVEL_TEXT("before"));
}

TEST_F(ConsentCommand, WritesNothingWithoutAConnection) {
    script.openStatus = 1722;
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(consent, ORVEL_TEXT("before"));
}

class PrivacyDocumentsCommand : public testing::Test {
  protected:
    int run() {
        ServiceChannel channel = getServiceClient();
        return static_cast<int>(getPrivacyDocumentsCommand(channel, kApp, documents));
    }

    ScriptedEndpoint script;
    WideString documents = ORVEL_TEXT("before");
};

TEST_F(PrivacyDocumentsCommand, RemovesTheMarkFromTheReply) {
    script.executions = {{0, kAcknowledged},
                         {0, ORVEL_TEXT("MyApp::PRIVACY_DOCUMENTS::{\"a\":1}")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(documents, ORVEL_TEXT("{\"a\":1}"));
}

TEST_F(PrivacyDocumentsCommand, RemovesTheFirstMarkAndKeepsWhatStandsBeforeIt) {
    script.executions = {
        {0, kAcknowledged},
        {0, ORVEL_TEXT("a MyApp::PRIVACY_DOCUMENTS::b MyApp::PRIVACY_DOCUMENTS::c")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(documents, ORVEL_TEXT("a b MyApp::PRIVACY_DOCUMENTS::c"));
}

TEST_F(PrivacyDocumentsCommand, KeepsTheMarkOfAnotherApplication) {
    script.executions = {{0, kAcknowledged}, {0, ORVEL_TEXT("Other::PRIVACY_DOCUMENTS::{}")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(documents, ORVEL_TEXT("Other::PRIVACY_DOCUMENTS::{}"));
}

TEST_F(PrivacyDocumentsCommand, TakesADeliveredReplyForASuccessWithoutReadingIt) {
    for (const WideString& reply : {kQuotaExceeded, kUnreadable}) {
        script.executions = {{0, kAcknowledged}, {0, reply}};
        script.executed.clear();
        EXPECT_EQ(run(), 0);
        EXPECT_EQ(documents, reply);
    }
}

TEST_F(PrivacyDocumentsCommand, ReadsTheReplyOfACommandThatWasNotDelivered) {
    script.executions = {{0, kAcknowledged}, {1726, kQuotaExceeded}};
    EXPECT_EQ(run(), 24);
    EXPECT_EQ(documents, ORVEL_TEXT("before"));
}

TEST_F(PrivacyDocumentsCommand, JudgesByTheHandshakesReplyWhenTheCommandWroteNone) {
    script.executions = {{0, kAcknowledged}, {1726, std::nullopt}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(documents, ORVEL_TEXT("before"));
}

TEST_F(PrivacyDocumentsCommand, WritesNothingWithoutAHandshake) {
    script.executions = {{0, ORVEL_TEXT("no")}};
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(documents, ORVEL_TEXT("before"));
}

TEST(ServiceChannel, IsBuiltAnewForEachOperation) {
    ScriptedEndpoint script;
    kRegister.run();
    kCollect.run();
    EXPECT_EQ(script.endpoints.size(), 2U);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST(ServiceChannel, HandsOnAnyCodeUnitOfTheApplicationsName) {
    ScriptedEndpoint script;
    const WideString app = WideString(1, 0xD800) + WideString(1, 0) + ORVEL_TEXT("::");
    ServiceChannel channel = getServiceClient();
    EXPECT_EQ(static_cast<int>(collectCommand(channel, app, {})), 0);
    EXPECT_EQ(script.executed[1].command, app + WideString(Token::kCollectDataclass));
}

TEST(Tokens, HaveTheirTexts) {
    EXPECT_EQ(Token::kConnectApp, ORVEL_TEXT("::CONNECT_APP::"));
    EXPECT_EQ(Token::kConsentRecord, ORVEL_TEXT("::CONSENT_RECORD::"));
    EXPECT_EQ(Token::kPrivacyDocuments, ORVEL_TEXT("::PRIVACY_DOCUMENTS::"));
    EXPECT_EQ(Token::kSuccess, ORVEL_TEXT("::SUCCESS::"));
    EXPECT_EQ(Token::kErrorCode, ORVEL_TEXT("ErrorCode :"));
}

}  // namespace
