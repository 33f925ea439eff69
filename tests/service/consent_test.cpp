#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "service/conversation.h"
#include "service/store_reader.h"
#include "support/temporary_folder.h"
#include "wide.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using namespace std::string_literals;

/// A change of the consent as a test compares it.
struct SeenChange {
    std::string application;
    std::int64_t user;
    std::int64_t time;
    std::string source;
    Permissions before;
    Permissions after;

    bool operator==(const SeenChange&) const = default;
};

class ConsentTest : public testing::Test {
  protected:
    void SetUp() override { connect(conversation_, "MyApp"); }

    static Relay::Server::Peer peerOf(std::uint32_t user) {
        Relay::Server::Peer peer;
        peer.userId = user;
        return peer;
    }
    static std::string say(Conversation& conversation, const std::string& text) {
        const auto answer = conversation.execute(u"TA", 0, wide(text));
        EXPECT_EQ(answer.status, 0);
        return toUtf8(answer.text).value_or("(ill-formed)");
    }
    std::string say(const std::string& text) { return say(conversation_, text); }
    static void connect(Conversation& conversation, const std::string& name) {
        ASSERT_EQ(say(conversation, name + "::CONNECT_APP::"), name + "::ACK::");
    }
    static std::string refused(const std::string& token, const std::string& name) {
        return "MyApp" + token + R"({"Results":["ErrorCode :)" + name + R"("]})";
    }

    static std::string permissions(const std::string& marketing, const std::string& support,
                                   const std::string& productEnhancement) {
        return json{{"marketing", marketing},
                    {"support", support},
                    {"product_enhancement", productEnhancement}}
            .dump();
    }
    std::string set(const std::string& document) { return say("MyApp::SET_CONSENT::" + document); }
    /// The record that the service answers with.
    json record() {
        const std::string reply = say("MyApp::GET_CONSENT::");
        const std::string begin = "MyApp::CONSENT_RECORD::";
        EXPECT_THAT(reply, testing::StartsWith(begin));
        return json::parse(reply.substr(begin.size()));
    }
    std::vector<SeenChange> history() {
        std::vector<SeenChange> changes;
        StoreReader(file_).forEachConsentChange([&changes](const ConsentChange& change) {
            changes.push_back({std::string(change.application), change.peerUser, change.received,
                               std::string(change.source), change.before, change.after});
        });
        return changes;
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    std::chrono::milliseconds now_{1'700'000'000'123};
    Store store_{file_, [this] { return now_; }};
    std::string logged_;
    Log log_{[this](std::string_view line) { logged_ += line; }, [this] { return now_; }};
    Settings settings_{.deviceSerialNumber = "SN \u6F22\U0001F600\"\\",
                       .countryCode = "PT",
                       .tenant = "a tenant",
                       .consentSource = "setup",
                       .managed = false,
                       .processData = true,
                       .privacyAddresses = {.privacy = "https://example.com/p",
                                            .warranty = "https://example.com/w",
                                            .telemetry = "https://example.com/t"}};
    Conversation conversation_{store_, settings_, log_, peerOf(1001)};
};

TEST_F(ConsentTest, RecordHasNineMembersBeforeAnyChange) {
    EXPECT_EQ(record(), (json{{"device_serial_number", "SN \u6F22\U0001F600\"\\"},
                              {"timestamp", ""},
                              {"country_code", "PT"},
                              {"process_data", true},
                              {"managed", false},
                              {"tenant", "a tenant"},
                              {"consent_source", "setup"},
                              {"privacy_documents",
                               {{"privacyurl", "https://example.com/p"},
                                {"warrantyurl", "https://example.com/w"},
                                {"telemetryurl", "https://example.com/t"}}},
                              {"processing_permissions",
                               {{"marketing", "Unknown"},
                                {"support", "Unknown"},
                                {"product_enhancement", "Unknown"}}}}));
}

TEST_F(ConsentTest, SetConsentChangesThePermissionsTheTimeAndTheSource) {
    json expected = record();
    EXPECT_EQ(set(permissions("Accepted", "Rejected", "Unknown")), "MyApp::SUCCESS::");
    expected["timestamp"] = "2023-11-14T22:13:20.123Z";
    expected["consent_source"] = "application";
    expected["processing_permissions"] =
        json::parse(permissions("Accepted", "Rejected", "Unknown"));
    EXPECT_EQ(record(), expected);
}

TEST_F(ConsentTest, LastChangeCountsAlsoWhenTheClockGoesBack) {
    set(permissions("Accepted", "Accepted", "Accepted"));
    now_ -= std::chrono::hours{1};
    set(permissions("Rejected", "Unknown", "Accepted"));
    EXPECT_EQ(record()["processing_permissions"],
              json::parse(permissions("Rejected", "Unknown", "Accepted")));
    EXPECT_EQ(record()["timestamp"], "2023-11-14T21:13:20.123Z");
}

TEST_F(ConsentTest, ConsentIsTheMachinesWhicheverApplicationAsks) {
    Conversation other(store_, settings_, log_, peerOf(1002));
    connect(other, "Other");
    EXPECT_EQ(say(other, "Other::SET_CONSENT::" + permissions("Rejected", "Accepted", "Unknown")),
              "Other::SUCCESS::");
    EXPECT_EQ(record()["processing_permissions"]["support"], "Accepted");
}

TEST_F(ConsentTest, HistorySaysWhoChangedWhatAndWhen) {
    set(permissions("Accepted", "Unknown", "Unknown"));
    Conversation other(store_, settings_, log_, peerOf(1002));
    connect(other, "Other");
    now_ += std::chrono::seconds{5};
    say(other, "Other::SET_CONSENT::" + permissions("Rejected", "Accepted", "Rejected"));
    const Permissions first{
        .marketing = "Accepted", .support = "Unknown", .productEnhancement = "Unknown"};
    const Permissions second{
        .marketing = "Rejected", .support = "Accepted", .productEnhancement = "Rejected"};
    const std::int64_t begin = 1'700'000'000'123;
    EXPECT_EQ(history(), (std::vector<SeenChange>{
                             {"MyApp", 1001, begin, "application", {}, first},
                             {"Other", 1002, begin + 5000, "application", first, second}}));
}

TEST_F(ConsentTest, SettingTheSameOnceMoreIsAChangeToo) {
    set(permissions("Accepted", "Accepted", "Accepted"));
    now_ += std::chrono::seconds{1};
    set(permissions("Accepted", "Accepted", "Accepted"));
    EXPECT_EQ(record()["timestamp"], "2023-11-14T22:13:21.123Z");
    ASSERT_EQ(history().size(), 2U);
    EXPECT_EQ(history()[1].before, history()[1].after);
}

TEST_F(ConsentTest, RefusesADocumentThatIsNotThePermissionsDocument) {
    set(permissions("Accepted", "Rejected", "Unknown"));
    const json before = record();
    std::vector<std::string> attempts = {"",     "[]",        "{",          R"("Accepted")",
                                         "null", "{\"a\":1}", "{} trailing"};
    for (const char* name : {"marketing", "support", "product_enhancement"}) {
        json attempt = json::parse(permissions("Rejected", "Rejected", "Rejected"));
        attempt.erase(name);
        attempts.push_back(attempt.dump());
        for (const json& value :
             {json(true), json(0), json(nullptr), json(""), json("accepted"), json(" Accepted"),
              json("REJECTED"), json("maybe"), json("Accepted\0x"s), json::array({"Accepted"})}) {
            attempt[name] = value;
            attempts.push_back(attempt.dump());
        }
    }
    for (const std::string& attempt : attempts) {
        EXPECT_EQ(set(attempt), refused("::SET_CONSENT::", "MalformedJson")) << attempt;
    }
    EXPECT_EQ(record(), before);
    EXPECT_EQ(history().size(), 1U);
}

TEST_F(ConsentTest, RefusesPermissionsInIllFormedText) {
    const auto answer = conversation_.execute(
        u"TA", 0, u"MyApp::SET_CONSENT::{\"marketing\":\"" + WideString(1, 0xD800) + u"\"}");
    EXPECT_EQ(toUtf8(answer.text), refused("::SET_CONSENT::", "MalformedJson"));
}

TEST_F(ConsentTest, FurtherMembersOfThePermissionsAreAllowedAndTheLastOfEqualOnesCounts) {
    EXPECT_EQ(set(R"({"more":[1],"marketing":5,"market\u0069ng":"Accepted","support":"Unknown",)"
                  R"("product_enhancement":"Rejected"})"),
              "MyApp::SUCCESS::");
    EXPECT_EQ(record()["processing_permissions"],
              json::parse(permissions("Accepted", "Unknown", "Rejected")));
}

TEST_F(ConsentTest, ManagedDeviceRefusesAnyChange) {
    settings_.managed = true;
    for (const std::string& document :
         {permissions("Accepted", "Accepted", "Accepted"), std::string("not the document")}) {
        EXPECT_EQ(set(document), refused("::SET_CONSENT::", "UnableToSetConsentForManagedDevice"));
    }
    EXPECT_EQ(record()["managed"], true);
    EXPECT_EQ(record()["timestamp"], "");
    EXPECT_EQ(record()["consent_source"], "setup");
    EXPECT_EQ(record()["processing_permissions"],
              json::parse(permissions("Unknown", "Unknown", "Unknown")));
    EXPECT_TRUE(history().empty());
}

TEST_F(ConsentTest, AnswersWithTheAddressesOfThePrivacyDocuments) {
    EXPECT_EQ(say("MyApp::GET_PRIVACY_DOCUMENTS::"),
              "MyApp::PRIVACY_DOCUMENTS::"
              R"({"privacyurl":"https://example.com/p","warrantyurl":"https://example.com/w",)"
              R"("telemetryurl":"https://example.com/t"})");
}

TEST_F(ConsentTest, CommandsWithoutAPayloadRefuseOne) {
    for (const std::string token : {"::GET_CONSENT::", "::GET_PRIVACY_DOCUMENTS::"}) {
        EXPECT_EQ(say("MyApp" + token + "{}"), refused(token, "MalformedOrUnknownMessage"));
    }
}

TEST_F(ConsentTest, NeedsTheHandshakeOfTheSameApplication) {
    Conversation unconnected(store_, settings_, log_, {});
    const std::string document = permissions("Accepted", "Accepted", "Accepted");
    for (const std::string token :
         {"::GET_CONSENT::", "::SET_CONSENT::", "::GET_PRIVACY_DOCUMENTS::"}) {
        const std::string payload = token == "::SET_CONSENT::" ? document : "";
        EXPECT_EQ(say(unconnected, "MyApp" + token + payload),
                  refused(token, "ApplicationIsNotConnected"));
        EXPECT_EQ(say("Other" + token + payload),
                  "Other" + token + R"({"Results":["ErrorCode :ApplicationPipeNotMatch"]})");
    }
    EXPECT_TRUE(history().empty());
}

TEST_F(ConsentTest, FailingStorageIsAGenericErrorAndChangesNothing) {
    set(permissions("Accepted", "Rejected", "Unknown"));
    const json before = record();
    Database saboteur(file_, Database::Access::kReadWrite);
    saboteur.execute(R"sql(CREATE TRIGGER full AFTER INSERT ON consent_change
        BEGIN SELECT RAISE(FAIL, 'no space'); END)sql");
    EXPECT_EQ(set(permissions("Rejected", "Rejected", "Rejected")),
              refused("::SET_CONSENT::", "GenericError"));
    EXPECT_EQ(json::parse(logged_)["event"], "storage_error");
    EXPECT_THAT(json::parse(logged_)["reason"], testing::HasSubstr("no space"));
    saboteur.execute("DROP TRIGGER full");
    EXPECT_EQ(record(), before);
    EXPECT_EQ(history().size(), 1U);
}

TEST_F(ConsentTest, ConsentThatCannotBeReadIsAGenericError) {
    Database saboteur(file_, Database::Access::kReadWrite);
    saboteur.execute("ALTER TABLE consent_change RENAME TO elsewhere");
    EXPECT_EQ(say("MyApp::GET_CONSENT::"), refused("::GET_CONSENT::", "GenericError"));
    EXPECT_EQ(json::parse(logged_)["event"], "storage_error");
}

TEST_F(ConsentTest, IllFormedTextInTheDataFailsTheCommandAlone) {
    set(permissions("Accepted", "Rejected", "Unknown"));
    Database saboteur(file_, Database::Access::kReadWrite);
    saboteur.execute("UPDATE consent_change SET source = CAST(x'FF' AS TEXT)");
    EXPECT_EQ(say("MyApp::GET_CONSENT::"), refused("::GET_CONSENT::", "GenericError"));
    EXPECT_EQ(json::parse(logged_)["event"], "command_failed");
}

TEST_F(ConsentTest, NothingIsCollectedWhenDataMayNotBeProcessed) {
    settings_.processData = false;
    const std::string identity =
        R"({"V":"1","DT":"","1":"MyApp","2":"2","3":"S","4":0,"5":"U","6":"D","7":"Production"})";
    ASSERT_EQ(say(R"(MyApp::REGISTER_DATACLASS::{"name":"","id":"Evt","version":"1","fields":[]})"),
              "MyApp::SUCCESS::");
    const std::string good = R"({"Evt":{"DT":"20240131T235959"}})";
    for (const std::string& event : {good, std::string(R"({"Evt":{}})"), std::string()}) {
        const std::string batch =
            R"({"events":[{"appsession":)" + identity + R"(,"data":[)" + event + "]}]}";
        EXPECT_EQ(say("MyApp::COLLECT_DATACLASS::" + batch),
                  refused("::COLLECT_DATACLASS::", "NotRightAccessToWrite"));
    }
    EXPECT_EQ(say("MyApp::COLLECT_DATACLASS::nonsense"),
              refused("::COLLECT_DATACLASS::", "NotRightAccessToWrite"));
    EXPECT_EQ(StoreReader(file_).countEvents({}), 0);
    Database database(file_, Database::Access::kReadOnly);
    Statement batches(database, "SELECT count(*) FROM batch");
    ASSERT_TRUE(batches.step());
    EXPECT_EQ(batches.integer(0), 0);
    EXPECT_EQ(record()["process_data"], false);
}

}  // namespace
}  // namespace Orvel::Service
