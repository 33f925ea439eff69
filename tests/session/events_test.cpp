/// The road of an event inside the library: registered, collected, sent.

#include <new>
#include <stdexcept>
#include <string>

#include "session/events_fixture.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::hresult_error;
using Analytics::Testing::Executed;
using Analytics::Testing::Execution;
using nlohmann::json;

const WideString kAcknowledged = ORVEL_TEXT("MyApp::ACK::");
const WideString kRejected =
    ORVEL_TEXT("MyApp::X::{\"Results\":[\"ErrorCode :InvalidDataclassRegistration\"]}");
const WideString kUnreadable = ORVEL_TEXT("MyApp::X::ErrorCode");

using CollectEvent = Events;
using RegisterDataClass = Events;
using SendEvents = Events;

TEST_F(RegisterDataClass, SendsTheDocumentAndTakesTheVersion) {
    EXPECT_EQ(registerClass(evt), 0);
    EXPECT_EQ(script.executed[1].command,
              ORVEL_TEXT("MyApp::REGISTER_DATACLASS::") + SessionAccess::getJSonStr(evt));
    EXPECT_EQ(identity().versionTag, ORVEL_TEXT("1.0"));
}

TEST_F(RegisterDataClass, KeepsTheVersionOfARejectedClass) {
    script.executions = {{0, kAcknowledged}, {0, kRejected}};
    EXPECT_EQ(registerClass(evt), 13);
    EXPECT_EQ(identity().versionTag, ORVEL_TEXT("1.0"));
}

TEST_F(RegisterDataClass, ReportsServiceUnavailableAndAccessDenied) {
    script.openStatus = 1722;
    EXPECT_EQ(registerClass(evt), 22);
    script.openStatus = 5;
    EXPECT_EQ(registerClass(evt), 32);
    EXPECT_EQ(identity().versionTag, ORVEL_TEXT("1.0"));
}

TEST_F(RegisterDataClass, BuildsItsDocumentBeforeItGetsTheClient) {
    int askedWhenClientCame = -1;
    script.onClient = [&] { askedWhenClientCame = evt.timesAsked; };
    registerClass(evt);
    EXPECT_EQ(askedWhenClientCame, 1);
    EXPECT_EQ(evt.timesAsked, 1);
}

TEST_F(RegisterDataClass, SendsTheSameClassTwiceWhenAskedTwice) {
    registerClass(evt);
    registerClass(evt);
    EXPECT_EQ(script.executed.size(), 4U);
    EXPECT_EQ(script.executed[1].command, script.executed[3].command);
}

TEST_F(RegisterDataClass, RaisesForAReplyThatCannotBeRead) {
    script.executions = {{0, kAcknowledged}, {0, kUnreadable}};
    EXPECT_THROW(registerClass(evt), hresult_error);
    EXPECT_EQ(identity().versionTag, ORVEL_TEXT("1.0"));
    EXPECT_EQ(script.closed, 1);
}

TEST_F(CollectEvent, RefusesAnEmptyTextBeforeAnyRule) {
    EXPECT_EQ(collect(evt, {}), 2);
    EXPECT_EQ(evt.timesAsked, 0);
    EXPECT_TRUE(queue().empty());
}

TEST_F(CollectEvent, ReportsTheRuleThatAnEventBreaksAndQueuesNothing) {
    TestDataClass dataClass({field(ORVEL_TEXT("n"), ORVEL_TEXT("integer")),
                             field(ORVEL_TEXT("s"), ORVEL_TEXT("varchar(2)"))});
    EXPECT_EQ(collect(dataClass, ORVEL_TEXT("{\"n\":\"x\"}")), 1);
    EXPECT_EQ(collect(dataClass, ORVEL_TEXT("[]")), 15);
    EXPECT_EQ(collect(dataClass, ORVEL_TEXT("{\"s\":\"abc\"}")), 29);
    EXPECT_TRUE(queue().empty());
}

TEST_F(CollectEvent, QueuesNothingWhenALimitIsBeyondItsRange) {
    TestDataClass dataClass({field(ORVEL_TEXT("s"), ORVEL_TEXT("varchar(99999999999)"))});
    EXPECT_THROW(collect(dataClass, ORVEL_TEXT("{\"s\":\"abc\"}")), std::out_of_range);
    EXPECT_TRUE(queue().empty());
}

TEST_F(CollectEvent, WrapsTheValuesUnderTheClassesIdentifier) {
    evt.dateTime = 1'706'745'599;
    EXPECT_EQ(collect(evt, ORVEL_TEXT(" { \"count\" : 3 } ")), 0);
    ASSERT_EQ(queue().size(), 1U);
    EXPECT_EQ(queue().front(),
              ORVEL_TEXT("{\"Evt\":{\"count\":3,\"DT\":\"20240131T235959\",\"V\":\"\"}}"));
    EXPECT_EQ(SessionAccess::getEventData(session, evt, ORVEL_TEXT("{\"count\":3}")),
              queue().front());
}

TEST_F(CollectEvent, ReplacesTheMembersThatItStamps) {
    evt.dateTime = 0;
    identity().versionTag = ORVEL_TEXT("9");
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"DT\":5,\"V\":\"x\",\"\\u0044T\":6,\"a\":1,\"DT\":7}")),
              0);
    const json record = json::parse(toUtf8(queue().front()));
    EXPECT_EQ(record, json::parse("{\"Evt\":{\"DT\":\"\",\"V\":\"9\",\"a\":1}}"));
    const std::string text = toUtf8(queue().front());
    EXPECT_EQ(text.find("\"DT\"", text.find("\"DT\"") + 1), std::string::npos);
}

TEST_F(CollectEvent, WritesAnEmptyTimeForZeroAndLess) {
    for (const std::int64_t time : {std::int64_t{0}, std::int64_t{-1}}) {
        evt.dateTime = time;
        ASSERT_EQ(collect(evt, ORVEL_TEXT("{\"a\":1}")), 0);
        EXPECT_EQ(json::parse(toUtf8(queue().back()))["Evt"]["DT"], "");
    }
}

TEST_F(CollectEvent, TakesTheTimeOfTheDataClassNotOfTheCollection) {
    ASSERT_EQ(collect(evt, ORVEL_TEXT("{\"a\":1}")), 0);
    setCurrentTime(kSomeTime + 1000);
    ASSERT_EQ(collect(evt, ORVEL_TEXT("{\"a\":2}")), 0);
    EXPECT_EQ(json::parse(toUtf8(queue().front()))["Evt"]["DT"],
              json::parse(toUtf8(queue().back()))["Evt"]["DT"]);
}

TEST_F(CollectEvent, StampsTheVersionRegisteredLastWhateverTheClass) {
    TestDataClass other({}, ORVEL_TEXT("Other"), ORVEL_TEXT("2.0"));
    ASSERT_EQ(collect(evt, ORVEL_TEXT("{\"a\":1}")), 0);
    EXPECT_EQ(json::parse(toUtf8(queue().back()))["Evt"]["V"], "");
    registerClass(evt);
    registerClass(other);
    ASSERT_EQ(collect(evt, ORVEL_TEXT("{\"a\":1}")), 0);
    EXPECT_EQ(json::parse(toUtf8(queue().back()))["Evt"]["V"], "2.0");
}

TEST_F(CollectEvent, KeepsTheOrderOfTheCallsAndNoTraceOfARefusedEvent) {
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"count\":1}")), 0);
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"count\":2}")), 0);
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"count\":\"no\"}")), 1);
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"count\":3}")), 0);
    int expected = 0;
    for (const WideString& record : queue()) {
        EXPECT_EQ(json::parse(toUtf8(record))["Evt"]["count"], ++expected);
    }
    EXPECT_EQ(expected, 3);
}

TEST_F(CollectEvent, QueuesEventsOfAClassThatWasNeverRegistered) {
    EXPECT_EQ(collect(evt, ORVEL_TEXT("{\"a\":1}")), 0);
    EXPECT_TRUE(script.endpoints.empty());
}

TEST_F(CollectEvent, CarriesAnyValueUnchanged) {
    const std::string values =
        "{\"cjk\":\"\u6f22\u5b57\",\"emoji\":\"\U0001F600\",\"escapes\":"
        "\"\\\"\\\\\\n\\u0000\\u001F\","
        "\"nested\":{\"a\":[1,{\"b\":null}]},\"t\":true,\"large\":9007199254740991}";
    evt.dateTime = 0;
    ASSERT_EQ(collect(evt, toWide(values)), 0);
    json expected = json::parse(values);
    expected["DT"] = "";
    expected["V"] = "";
    EXPECT_EQ(json::parse(toUtf8(queue().front())), json({{"Evt", expected}}));
}

TEST_F(CollectEvent, AsksForTheFieldsOnce) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    EXPECT_EQ(evt.timesAsked, 1);
}

TEST_F(SendEvents, SendsTheQueueUnderTheSessionsIdentity) {
    identity().deviceId = ORVEL_TEXT("OS 1.2.3.4");
    const WideString sessionId = identity().sessionId;
    const WideString userId = identity().userId;
    evt.dateTime = kSomeTime;
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    collect(evt, ORVEL_TEXT("{\"count\":2}"));
    identity().versionTag = ORVEL_TEXT("3");
    EXPECT_EQ(send(), 0);
    const json expected = {
        {"events",
         {{{"appsession",
            {{"V", "3"},
             {"DT", "20260921T141320"},
             {"1", "MyApp"},
             {"2", "1.2"},
             {"3", toUtf8(sessionId)},
             {"4", 0},
             {"5", toUtf8(userId)},
             {"6", "OS 1.2.3.4"},
             {"7", "Production"}}},
           {"data",
            {{{"Evt", {{"count", 1}, {"DT", "20260921T141320"}, {"V", ""}}}},
             {{"Evt", {{"count", 2}, {"DT", "20260921T141320"}, {"V", ""}}}}}}}}}};
    EXPECT_EQ(sent(), expected);
}

TEST_F(SendEvents, WritesTheMembersOfTheIdentityInOrder) {
    send();
    const std::string command = toUtf8(script.executed.back().command);
    std::size_t last = 0;
    for (const char* member :
         {"{\"events\":[{\"appsession\":{\"V\":", "\"DT\":", "\"1\":", "\"2\":", "\"3\":",
          "\"4\":0,", "\"5\":", "\"6\":", "\"7\":\"Production\"},\"data\":[]}]}"}) {
        const std::size_t at = command.find(member);
        ASSERT_NE(at, std::string::npos) << member;
        EXPECT_GT(at, last);
        last = at;
    }
}

TEST_F(SendEvents, SendsAnEmptyBatchAndBeginsANewSession) {
    const WideString before = identity().sessionId;
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(sent()["events"].size(), 1U);
    EXPECT_EQ(sent()["events"][0]["appsession"].size(), 9U);
    EXPECT_EQ(sent()["events"][0]["data"], json::array());
    EXPECT_NE(identity().sessionId, before);
}

TEST_F(SendEvents, WritesEmptyTextsAsStringsAndTheCounterAsANumber) {
    identity().deviceId.clear();
    session.SetStartTime(0);
    identity().sessionCounter = -5;
    send();
    const json identityObject = sent()["events"][0]["appsession"];
    for (const auto& [key, value] : identityObject.items()) {
        EXPECT_EQ(value.is_string(), key != "4") << key;
    }
    EXPECT_EQ(identityObject["DT"], "");
    EXPECT_EQ(identityObject["6"], "");
    EXPECT_EQ(identityObject["4"], -5);
}

TEST_F(SendEvents, LosesWhatTheServiceRejectsAndSendsItNeverAgain) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    script.executions = {{0, kAcknowledged}, {0, kRejected}};
    EXPECT_EQ(send(), 13);
    EXPECT_TRUE(queue().empty());
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(sent()["events"][0]["data"], json::array());
}

TEST_F(SendEvents, LosesWhatNeverReachesTheService) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    script.openStatus = 1722;
    const WideString before = identity().sessionId;
    EXPECT_EQ(send(), 1);
    EXPECT_TRUE(queue().empty());
    EXPECT_NE(identity().sessionId, before);
}

TEST_F(SendEvents, RenewsTheSessionWhateverTheResult) {
    const auto renews = [&](const std::vector<Execution>& executions) {
        script.executed.clear();
        script.executions = executions;
        identity().sessionCounter = 9;
        session.SetEndTime(kSomeTime + 10);
        const WideString before = identity().sessionId;
        setCurrentTime(kSomeTime + 77);
        try {
            send();
        } catch (const hresult_error&) {
        }
        const bool renewed = identity().sessionId != before && identity().sessionCounter == 0 &&
                             identity().startTime == kSomeTime + 77 &&
                             SessionAccess::endTime(session) == 0;
        setCurrentTime(kSomeTime);
        session.SetStartTime(kSomeTime);
        return renewed;
    };
    EXPECT_TRUE(renews({}));
    EXPECT_TRUE(renews({{0, ORVEL_TEXT("no")}}));
    EXPECT_TRUE(renews({{0, kAcknowledged}, {0, kRejected}}));
    EXPECT_TRUE(renews({{0, kAcknowledged}, {1726, std::nullopt}}));
    EXPECT_TRUE(renews({{0, kAcknowledged}, {0, kUnreadable}}));
}

TEST_F(SendEvents, RaisesForAReplyThatCannotBeReadWithTheQueueEmpty) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    script.executions = {{0, kAcknowledged}, {0, kUnreadable}};
    EXPECT_THROW(send(), hresult_error);
    EXPECT_TRUE(queue().empty());
    EXPECT_EQ(script.closed, 1);
}

TEST_F(SendEvents, EmptiesTheQueueBeforeItSpeaks) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    std::size_t queuedWhenSpeaking = 99;
    script.onExecute = [&](const Executed&) { queuedWhenSpeaking = queue().size(); };
    send();
    EXPECT_EQ(queuedWhenSpeaking, 0U);
}

TEST_F(SendEvents, GetsTheClientFirst) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    const WideString before = identity().sessionId;
    script.onClient = [] { throw std::bad_alloc(); };
    EXPECT_THROW(send(), std::bad_alloc);
    EXPECT_EQ(queue().size(), 1U);
    EXPECT_EQ(identity().sessionId, before);
}

TEST_F(SendEvents, KeepsASuppliedUserFromBatchToBatchAndNotAGeneratedOne) {
    send();
    const json first = sent()["events"][0]["appsession"];
    send();
    const json second = sent()["events"][0]["appsession"];
    EXPECT_NE(first["5"], second["5"]);
    EXPECT_NE(first["3"], second["3"]);

    AnalyticsSession supplied(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"),
                              ORVEL_TEXT("{00000000-0000-0000-0000-000000000000}"));
    for (int batch = 0; batch < 2; ++batch) {
        supplied.SendEvents();
        EXPECT_EQ(sent()["events"][0]["appsession"]["5"], "{00000000-0000-0000-0000-000000000000}");
    }
}

TEST_F(SendEvents, StampsTheIdentityOfTheMomentOfSending) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    identity().versionTag = ORVEL_TEXT("later");
    send();
    EXPECT_EQ(sent()["events"][0]["appsession"]["V"], "later");
    EXPECT_EQ(sent()["events"][0]["data"][0]["Evt"]["V"], "");
}

TEST_F(SendEvents, DoesNotTouchTheQueueWhileItBuildsTheDocument) {
    collect(evt, ORVEL_TEXT("{\"count\":1}"));
    const WideString document = SessionAccess::generateEventsJsonStr(session);
    EXPECT_EQ(queue().size(), 1U);
    EXPECT_EQ(SessionAccess::generateEventsJsonStr(session), document);
}

}  // namespace
}  // namespace Orvel::TestSupport
