#include "service/conversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "service/store_reader.h"
#include "support/temporary_folder.h"
#include "wide.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using namespace std::string_literals;

constexpr const char* kTime = "20240131T235959";

/// An event as a test compares it.
struct SeenEvent {
    std::string className;
    std::string error;
    std::string path;
    std::string content;

    bool operator==(const SeenEvent&) const = default;
};

std::ostream& operator<<(std::ostream& out, const SeenEvent& seen) {
    return out << seen.className << " | " << seen.error << " | " << seen.path << " | "
               << seen.content;
}

class ConversationTest : public testing::Test {
  protected:
    std::string say(Conversation& conversation, const WideString& text) {
        const auto answer = conversation.execute(WideString(kTarget), 0, text);
        EXPECT_EQ(answer.status, 0);
        return toUtf8(answer.text).value_or("(ill-formed)");
    }
    std::string say(const std::string& text) { return say(conversation_, wide(text)); }

    void connect() { ASSERT_EQ(say("MyApp::CONNECT_APP::"), "MyApp::ACK::"); }

    void connectAndRegister(const json& fields) {
        connect();
        ASSERT_EQ(say("MyApp::REGISTER_DATACLASS::" + registration(fields).dump()),
                  "MyApp::SUCCESS::");
    }

    static json registration(const json& fields) {
        return {{"name", "An event"}, {"id", "Evt"}, {"version", "1.0"}, {"fields", fields}};
    }
    static json field(const std::string& id, const std::string& type,
                      const std::string& nullable = "true") {
        return {{"id", id}, {"name", id}, {"nullable", nullable}, {"type", type}};
    }
    static Relay::Server::Peer peerOf(std::uint32_t user) {
        Relay::Server::Peer peer;
        peer.userId = user;
        return peer;
    }
    static json identity() {
        return {{"V", "1.0"}, {"DT", kTime},   {"1", "MyApp"},    {"2", "2.1"},       {"3", "{S}"},
                {"4", 0},     {"5", "a user"}, {"6", "a device"}, {"7", "Production"}};
    }
    static std::string batch(const std::string& data, const json& session = identity()) {
        return R"({"events":[{"appsession":)" + session.dump() + R"(,"data":[)" + data + "]}]}";
    }
    static std::string event(const std::string& values) {
        return R"({"Evt":{)" + values + R"("DT":")" + kTime + R"(","V":"1.0"}})";
    }
    std::string collect(const std::string& document) {
        return say("MyApp::COLLECT_DATACLASS::" + document);
    }
    static std::string refused(const std::string& token, const std::vector<std::string>& names) {
        json results = json::array();
        for (const std::string& name : names) {
            results.push_back("ErrorCode :" + name);
        }
        return "MyApp" + token + json{{"Results", results}}.dump();
    }
    static std::string refusedBatch(const std::vector<std::string>& names) {
        return refused("::COLLECT_DATACLASS::", names);
    }

    std::vector<SeenEvent> stored() {
        std::vector<SeenEvent> events;
        StoreReader(file_).forEachEvent({}, [&events](const EventRow& row) {
            events.push_back({std::string(row.className.value_or("(none)")), std::string(row.error),
                              std::string(row.path), std::string(row.content)});
        });
        return events;
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    std::chrono::milliseconds now_{1'700'000'000'000};
    Store store_{file_, [this] { return now_; }};
    std::string logged_;
    Log log_{[this](std::string_view line) { logged_ += line; }, [this] { return now_; }};
    Settings settings_;
    Conversation conversation_{store_, settings_, log_, peerOf(1001)};
};

TEST_F(ConversationTest, AcknowledgesAHandshake) {
    EXPECT_EQ(say("MyApp::CONNECT_APP::"), "MyApp::ACK::");
    EXPECT_EQ(say("MyApp::CONNECT_APP::"), "MyApp::ACK::") << "once more";
}

TEST_F(ConversationTest, ServesOneTargetOnly) {
    for (const WideStringView target : {u"", u"ta", u"TA ", u"TB"}) {
        const auto answer = conversation_.execute(WideString(target), 0, u"MyApp::CONNECT_APP::");
        EXPECT_EQ(answer.status, kUnknownTarget);
        EXPECT_EQ(answer.text, u"");
    }
}

TEST_F(ConversationTest, HandshakeNameMayHoldAnything) {
    const std::string name = "a::ACK::b:REGISTER_DATACLASS::\0 \u4E2D\U0001F600"s;
    EXPECT_EQ(say(name + "::CONNECT_APP::"), name + "::ACK::");
    EXPECT_EQ(say(name + "::REGISTER_DATACLASS::" + registration(json::array()).dump()),
              name + "::SUCCESS::");
    json session = identity();
    session["1"] = name;
    EXPECT_EQ(say(name + "::COLLECT_DATACLASS::" + batch(event(""), session)),
              name + "::SUCCESS::");
}

TEST_F(ConversationTest, RefusesAHandshakeWithoutAName) {
    EXPECT_EQ(say("::CONNECT_APP::"),
              R"(::ACK::{"Results":["ErrorCode :MalformedOrUnknownMessage"]})");
}

TEST_F(ConversationTest, RefusesAHandshakeWithAPayload) {
    EXPECT_EQ(say("MyApp::CONNECT_APP::x"), refused("::ACK::", {"MalformedOrUnknownMessage"}));
    EXPECT_EQ(say("MyApp::GET_CONSENT::"),
              refused("::GET_CONSENT::", {"ApplicationIsNotConnected"}));
}

TEST_F(ConversationTest, RefusesAHandshakeWithAnIllFormedName) {
    const WideString name = {u'a', 0xD800};
    const auto answer = conversation_.execute(u"TA", 0, name + u"::CONNECT_APP::");
    EXPECT_EQ(answer.text,
              name + u"::ACK::{\"Results\":[\"ErrorCode :MalformedOrUnknownMessage\"]}");
}

TEST_F(ConversationTest, RefusesASecondHandshakeWithAnotherName) {
    connect();
    EXPECT_EQ(say("Other::CONNECT_APP::"),
              R"(Other::ACK::{"Results":["ErrorCode :ApplicationPipeNotMatch"]})");
    EXPECT_EQ(collect(batch("")), "MyApp::SUCCESS::") << "the first name stays";
}

TEST_F(ConversationTest, RefusesCommandsBeforeTheHandshake) {
    for (const std::string token :
         {"::REGISTER_DATACLASS::", "::COLLECT_DATACLASS::", "::GET_CONSENT::", "::SET_CONSENT::",
          "::GET_PRIVACY_DOCUMENTS::", "::NONSENSE::"}) {
        EXPECT_EQ(say("MyApp" + token + "{}"), refused(token, {"ApplicationIsNotConnected"}));
    }
}

TEST_F(ConversationTest, RefusesAnotherApplicationsCommands) {
    connect();
    for (const std::string name : {"Other", "MyApps", "myapp", "My", "MyApp::X", ""}) {
        EXPECT_EQ(
            say(name + "::COLLECT_DATACLASS::" + batch("")),
            name + R"(::COLLECT_DATACLASS::{"Results":["ErrorCode :ApplicationPipeNotMatch"]})");
    }
    EXPECT_TRUE(stored().empty());
}

TEST_F(ConversationTest, RefusesUnknownTokensUnderThemselves) {
    connect();
    for (const std::string token : {"::NONSENSE::", "::nonsense::", "::CONSENT_RECORD::",
                                    "::PRIVACY_DOCUMENTS::", "::SUCCESS::", "::ACK::"}) {
        EXPECT_EQ(say("MyApp" + token + "{}"), refused(token, {"MalformedOrUnknownMessage"}));
    }
}

TEST_F(ConversationTest, AnswersATextWithoutAToken) {
    EXPECT_EQ(say(""), R"(::UNKNOWN::{"Results":["ErrorCode :MalformedOrUnknownMessage"]})");
    connect();
    EXPECT_EQ(say("hello"), refused("::UNKNOWN::", {"MalformedOrUnknownMessage"}));
}

TEST_F(ConversationTest, RegistersAClassAgainWithTheSameFields) {
    connectAndRegister(json::array({field("count", "integer")}));
    EXPECT_EQ(say("MyApp::REGISTER_DATACLASS:: " +
                  registration(json::array({field("count", "integer")})).dump(2)),
              "MyApp::SUCCESS::");
}

TEST_F(ConversationTest, RefusesTheSameVersionWithOtherFields) {
    connectAndRegister(json::array({field("count", "integer")}));
    const auto attempt = [this](const json& fields) {
        return say("MyApp::REGISTER_DATACLASS::" + registration(fields).dump());
    };
    const std::string refusal = refused("::REGISTER_DATACLASS::", {"InvalidDataclassRegistration"});
    EXPECT_EQ(attempt(json::array()), refusal);
    EXPECT_EQ(attempt(json::array({field("count", "int")})), refusal);
    EXPECT_EQ(attempt(json::array({field("count", "integer", "false")})), refusal);
    EXPECT_EQ(attempt(json::array({field("count", "integer"), field("b", "x")})), refusal);
    EXPECT_EQ(collect(batch(event(R"("count":1,)"))), "MyApp::SUCCESS::") << "nothing has changed";
}

TEST_F(ConversationTest, RefusesRegistrationsWithoutTheirMembers) {
    connect();
    const json good = registration(json::array({field("count", "integer")}));
    std::vector<json> attempts;
    for (const char* name : {"name", "id", "version", "fields"}) {
        json attempt = good;
        attempt.erase(name);
        attempts.push_back(attempt);
        attempt[name] = 5;
        attempts.push_back(attempt);
    }
    for (const char* name : {"name", "id", "nullable", "type"}) {
        json attempt = good;
        attempt["fields"][0].erase(name);
        attempts.push_back(attempt);
        attempt["fields"][0][name] = false;
        attempts.push_back(attempt);
    }
    attempts.push_back(registration(json::array({"text"})));
    attempts.push_back(registration(json::object()));
    for (const json& attempt : attempts) {
        EXPECT_EQ(say("MyApp::REGISTER_DATACLASS::" + attempt.dump()),
                  refused("::REGISTER_DATACLASS::", {"MalformedDataclass"}))
            << attempt;
    }
    EXPECT_EQ(collect(batch(event(""))), refusedBatch({"UnregisteredDataclass"}));
}

TEST_F(ConversationTest, RefusesPayloadsThatAreNoJsonObject) {
    connect();
    const std::string deep = R"({"a":)" + std::string(1040, '[') + std::string(1040, ']') + "}";
    for (const std::string token : {"::REGISTER_DATACLASS::", "::COLLECT_DATACLASS::"}) {
        for (const std::string& payload : {""s, "[]"s, "{"s, "{} x"s, deep}) {
            EXPECT_EQ(say("MyApp" + token + payload), refused(token, {"MalformedJson"}));
        }
        const auto answer = conversation_.execute(
            u"TA", 0, u"MyApp" + wide(token) + u"{\"a\":\"" + WideString(1, 0xDC00) + u"\"}");
        EXPECT_EQ(toUtf8(answer.text), refused(token, {"MalformedJson"}));
    }
}

TEST_F(ConversationTest, RefusesBatchesOfAnotherForm) {
    connect();
    std::vector<std::string> attempts = {
        R"({})",
        R"({"events":{}})",
        R"({"events":[]})",
        R"({"events":[5]})",
        R"({"events":[{}]})",
        R"({"events":[{"appsession":)" + identity().dump() + "}]}",
        R"({"events":[{"data":[]}]})",
        R"({"events":[{"data":[],"appsession":[]}]})",
        R"({"events":[{"data":{},"appsession":)" + identity().dump() + "}]}"};
    const std::string one = batch("");
    attempts.push_back(R"({"events":[)" + one.substr(11, one.size() - 13) + "," +
                       one.substr(11, one.size() - 13) + "]}");
    for (const char* name : {"V", "DT", "1", "2", "3", "4", "5", "6", "7"}) {
        json session = identity();
        session.erase(name);
        attempts.push_back(batch("", session));
        session[name] = name == "4"s ? json("0") : json(5);
        attempts.push_back(batch("", session));
    }
    for (const std::string& attempt : attempts) {
        EXPECT_EQ(collect(attempt), refusedBatch({"MalformedJson"})) << attempt;
    }
}

TEST_F(ConversationTest, RefusesABatchOfAnotherApplication) {
    connect();
    json session = identity();
    session["1"] = "Other";
    EXPECT_EQ(collect(batch("", session)), refusedBatch({"ApplicationPipeNotMatch"}));
}

TEST_F(ConversationTest, BatchTimeMayBeEmptyButNotOfAnotherForm) {
    connect();
    json session = identity();
    session["DT"] = "";
    EXPECT_EQ(collect(batch("", session)), "MyApp::SUCCESS::");
    session["DT"] = "2024-01-31";
    EXPECT_EQ(collect(batch("", session)), refusedBatch({"InvalidDatetimeFormat"}));
}

TEST_F(ConversationTest, StoresGoodEventsCharacterForCharacter) {
    connectAndRegister(json::array({field("count", "integer"), field("text", "varchar(40)")}));
    const std::string values =
        "{ \"count\" : 3.0000000000000000000001 ,\n \"t\\u0065xt\":"
        "\"\u4E2D\U0001F600 \\u0000 \\/ } \\\" {\",\"more\":[1e999, {}],"
        "\"DT\":\"20240131T235959\",\"V\":7 }"s;
    ASSERT_EQ(collect(batch(" { \"Evt\" : " + values + " } , " + event(R"("count":-1,)"))),
              "MyApp::SUCCESS::");
    const auto events = stored();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0], (SeenEvent{"Evt", "", "", values}));
    EXPECT_EQ(events[1].content, R"({"count":-1,"DT":"20240131T235959","V":"1.0"})");
}

TEST_F(ConversationTest, StoresEventsWithTheIdentityOfTheirSession) {
    connectAndRegister(json::array());
    json session = identity();
    session["V"] = "tag";
    ASSERT_EQ(collect(batch(event(""), session)), "MyApp::SUCCESS::");
    int seen = 0;
    StoreReader(file_).forEachEvent({}, [&](const EventRow& row) {
        ++seen;
        EXPECT_EQ(row.application, "MyApp");
        EXPECT_EQ(row.applicationVersion, "2.1");
        EXPECT_EQ(row.session, "{S}");
        EXPECT_EQ(row.sessionCounter, "0");
        EXPECT_EQ(row.sessionStarted, kTime);
        EXPECT_EQ(row.user, "a user");
        EXPECT_EQ(row.device, "a device");
        EXPECT_EQ(row.environment, "Production");
        EXPECT_EQ(row.className, "Evt");
        EXPECT_EQ(row.version, "1.0");
        EXPECT_EQ(row.time, kTime);
        EXPECT_EQ(row.received, now_.count());
        EXPECT_EQ(row.peerUser, 1001);
    });
    EXPECT_EQ(seen, 1);
}

TEST_F(ConversationTest, KeepsTheGoodEventsOfABatchWithBadOnes) {
    connectAndRegister(json::array({field("count", "integer", "false")}));
    const std::string good = event(R"("count":1,)");
    const std::string bad = event(R"("count" : "x",)");
    const std::string unknown = R"({"Other":{"DT":"20240131T235959"}})";
    const std::string timeless = R"({"Evt":{"count":2}})";
    EXPECT_EQ(collect(batch(bad + "," + good + ", " + unknown + " ," + timeless)),
              refusedBatch({"DataclassNotFollowRegisteredFormat", "UnregisteredDataclass",
                            "DateTimeFieldIsRequired"}));
    EXPECT_EQ(
        stored(),
        (std::vector<SeenEvent>{
            {"Evt", "DataclassNotFollowRegisteredFormat", "$.events[0].data[0].Evt.count", bad},
            {"Evt", "", "", R"({"count":1,"DT":"20240131T235959","V":"1.0"})"},
            {"Other", "UnregisteredDataclass", "$.events[0].data[2].Other", unknown},
            {"Evt", "DateTimeFieldIsRequired", "$.events[0].data[3].Evt.DT", timeless}}));
}

TEST_F(ConversationTest, RefusesEventsThatAreNotOneClassWithItsValues) {
    connectAndRegister(json::array());
    for (const std::string bad :
         {"5", "\"x\"", "null", "[]", "{}", R"({"Evt":5})", R"({"Evt":null})", R"({"Evt":[]})",
          R"({"Evt":{},"Other":{}})", R"({"Evt":{},"Evt":5})"}) {
        EXPECT_EQ(collect(batch(bad)), refusedBatch({"MalformedJson"})) << bad;
        const auto events = stored();
        EXPECT_EQ(events.back(),
                  (SeenEvent{"(none)", "MalformedJson", "$.events[0].data[0]", bad}));
    }
}

TEST_F(ConversationTest, StoresEventsOfEveryShapeCharacterForCharacter) {
    connectAndRegister(json::array());
    const std::string begin = R"("DT":"20240131T235959")";
    const std::vector<std::string> values = {"{" + begin + "}",
                                             "{" + begin + R"(,"x":{"y":[{},"]}"]}})",
                                             "{" + begin + R"( , "\"}\\" : [ ] })",
                                             "{" + begin + R"(,"":"\\"})",
                                             "{" + begin + R"(,"x":{}})",
                                             "{" + begin + ",\"\u4E2D\\u0000\":-1.5e3\n}",
                                             R"({"x":{"}":"{"}, )" + begin + " }"};
    std::string data;
    std::vector<SeenEvent> expected;
    for (const std::string& value : values) {
        data += (data.empty() ? "" : " ,") + R"({ "Evt" :)"s + value + "}";
        expected.push_back({"Evt", "", "", value});
    }
    EXPECT_EQ(collect(batch(data)), "MyApp::SUCCESS::");
    EXPECT_EQ(stored(), expected);
}

TEST_F(ConversationTest, StoresBadEventsOfEveryShapeBetweenGoodOnes) {
    connectAndRegister(json::array());
    const std::vector<std::string> bad = {R"({"Evt":{}})", R"({"Evt":{ "x" : "\"}" } })",
                                          R"({"Other":{"x":{"y":{}}}})", "[{}]",
                                          R"({"Evt":{},"E":{}})"};
    for (const std::string& event_ : bad) {
        collect(batch(event("") + " , " + event_ + " , " + event("")));
        const auto events = stored();
        EXPECT_EQ(events[events.size() - 2].content, event_);
        EXPECT_EQ(events.back().content, R"({"DT":"20240131T235959","V":"1.0"})");
    }
}

TEST_F(ConversationTest, LastOfTwoEqualMembersIsTheOneThatIsReadAndStored) {
    connectAndRegister(json::array({field("count", "integer")}));
    const std::string last = R"({"count":"x","count":2,"DT":"","DT":"20240131T235959"})";
    const std::string data = R"({"Evt":{"count":"x"}, "\u0045vt" : )" + last + "}";
    EXPECT_EQ(collect(R"({"events":5,"events":[{"data":5,"appsession":7,"data":[)" + data +
                      R"(],"appsession":)" + identity().dump() + "}]}"),
              "MyApp::SUCCESS::");
    EXPECT_EQ(stored(), (std::vector<SeenEvent>{{"Evt", "", "", last}}));
}

TEST_F(ConversationTest, EventNeedsATime) {
    connectAndRegister(json::array());
    for (const std::string values : {"{}", R"({"DT":""})", R"({"DT":null})"}) {
        EXPECT_EQ(collect(batch(R"({"Evt":)" + values + "}")),
                  refusedBatch({"DateTimeFieldIsRequired"}))
            << values;
    }
    for (const std::string values : {R"({"DT":5})", R"({"DT":"20230229T000000"})",
                                     R"({"DT":"2024-01-31T23:59:59"})", R"({"DT":{}})"}) {
        EXPECT_EQ(collect(batch(R"({"Evt":)" + values + "}")),
                  refusedBatch({"InvalidDatetimeFormat"}))
            << values;
    }
}

TEST_F(ConversationTest, FieldsAreJudgedBeforeTheTime) {
    connectAndRegister(json::array({field("count", "integer")}));
    EXPECT_EQ(collect(batch(R"({"Evt":{"count":"x"}})")),
              refusedBatch({"DataclassNotFollowRegisteredFormat"}));
}

TEST_F(ConversationTest, LatestRegistrationJudgesWhateverVersionAnEventBears) {
    connectAndRegister(json::array({field("count", "integer")}));
    json second = registration(json::array({field("count", "varchar(3)")}));
    second["version"] = "2.0";
    ASSERT_EQ(say("MyApp::REGISTER_DATACLASS::" + second.dump()), "MyApp::SUCCESS::");
    EXPECT_EQ(collect(batch(event(R"("count":"abc",)"))), "MyApp::SUCCESS::");
    connectAndRegister(json::array({field("count", "integer")}));
    EXPECT_EQ(collect(batch(event(R"("count":"abc",)"))),
              refusedBatch({"DataclassNotFollowRegisteredFormat"}));
}

TEST_F(ConversationTest, ClassesBelongToTheApplicationThatRegisteredThem) {
    connectAndRegister(json::array());
    Conversation other(store_, settings_, log_, {});
    ASSERT_EQ(say(other, u"Other::CONNECT_APP::"), "Other::ACK::");
    json session = identity();
    session["1"] = "Other";
    EXPECT_EQ(say(other, wide("Other::COLLECT_DATACLASS::" + batch(event(""), session))),
              R"(Other::COLLECT_DATACLASS::{"Results":["ErrorCode :UnregisteredDataclass"]})");
}

TEST_F(ConversationTest, AcceptsAVarcharLimitBeyondTheRange) {
    connectAndRegister(json::array({field("t", "varchar(99999999999)")}));
    EXPECT_EQ(collect(batch(event(R"("t":"abc",)"))), "MyApp::SUCCESS::");
}

TEST_F(ConversationTest, FailingStorageUndoesTheWholeBatchAndTheServiceLivesOn) {
    connectAndRegister(json::array());
    Database saboteur(file_, Database::Access::kReadWrite);
    saboteur.execute(R"sql(CREATE TRIGGER full BEFORE INSERT ON event
        WHEN (SELECT count(*) FROM event) = 2 BEGIN SELECT RAISE(FAIL, 'no space'); END)sql");
    const std::string three = event("") + "," + event("") + "," + event("");
    EXPECT_EQ(collect(batch(three)), refusedBatch({"GenericError"}));
    EXPECT_TRUE(stored().empty());
    EXPECT_EQ(json::parse(logged_)["event"], "storage_error");
    EXPECT_THAT(json::parse(logged_)["reason"], testing::HasSubstr("no space"));
    saboteur.execute("DROP TRIGGER full");
    EXPECT_EQ(collect(batch(three)), "MyApp::SUCCESS::");
    EXPECT_EQ(stored().size(), 3U);
}

TEST_F(ConversationTest, DataThatCannotBeReadBackFailsTheCommandAlone) {
    connectAndRegister(json::array());
    Database saboteur(file_, Database::Access::kReadWrite);
    saboteur.execute("UPDATE data_class SET fields = '[5'");
    EXPECT_EQ(collect(batch(event(""))), refusedBatch({"GenericError"}));
    EXPECT_EQ(json::parse(logged_)["event"], "command_failed");
    saboteur.execute("UPDATE data_class SET fields = '[]'");
    EXPECT_EQ(collect(batch(event(""))), "MyApp::SUCCESS::");
}

TEST_F(ConversationTest, FailingStorageRefusesARegistration) {
    connect();
    Database saboteur(file_, Database::Access::kReadWrite);
    saboteur.execute(R"sql(CREATE TRIGGER full BEFORE INSERT ON data_class
        BEGIN SELECT RAISE(ABORT, 'no space'); END)sql");
    const std::string document = registration(json::array()).dump();
    EXPECT_EQ(say("MyApp::REGISTER_DATACLASS::" + document),
              refused("::REGISTER_DATACLASS::", {"ErrorIODataclassRegistration"}));
    saboteur.execute("DROP TRIGGER full");
    EXPECT_EQ(say("MyApp::REGISTER_DATACLASS::" + document), "MyApp::SUCCESS::");
}

}  // namespace
}  // namespace Orvel::Service
