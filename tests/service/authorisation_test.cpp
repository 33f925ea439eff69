#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "service/conversation.h"
#include "service/store_reader.h"
#include "support/temporary_folder.h"
#include "wide.h"

namespace Orvel::Service {
namespace {

const std::string kEvent = R"({"Evt":{"DT":"20240131T235959","V":"1"}})";
const std::string kSecret = R"({"Secret":{"name":"x","DT":"20240131T235959","V":"1"}})";

std::string refusal(const std::string& begin, const std::string& name) {
    return begin + R"({"Results":["ErrorCode :)" + name + R"("]})";
}

/// What an application hears that may not do everything.
class AuthorisationTest : public testing::Test {
  protected:
    static Relay::Server::Peer peerOf(std::uint32_t user) {
        Relay::Server::Peer peer;
        peer.userId = user;
        return peer;
    }
    void allow(const std::string& name, const AllowedApplication& application) {
        if (!settings_.access.applications) {
            settings_.access.applications.emplace();
        }
        settings_.access.applications->emplace(name, application);
    }
    std::string say(const std::string& text) {
        return toUtf8(conversation_.execute(WideString(kTarget), 0, wide(text)).text).value();
    }
    std::string registerClass(const std::string& id, const std::string& fields = "") {
        return say(R"(MyApp::REGISTER_DATACLASS::{"name":"","version":"1","fields":[)" + fields +
                   R"(],"id":")" + id + "\"}");
    }
    std::string collect(const std::string& data) {
        return say(
            R"(MyApp::COLLECT_DATACLASS::{"events":[{"appsession":{"V":"","DT":"","1":"MyApp",)"
            R"("2":"","3":"","4":0,"5":"","6":"","7":""},"data":[)" +
            data + "]}]}");
    }
    std::vector<std::string> stored() {
        std::vector<std::string> found;
        StoreReader(file_).forEachEvent({}, [&found](const EventRow& row) {
            found.push_back(std::string(row.className.value_or("")) + "|" + std::string(row.error) +
                            "|" + std::string(row.path) + "|" + std::string(row.content));
        });
        return found;
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    Store store_{file_, [] { return std::chrono::milliseconds{1'700'000'000'000}; }};
    Log log_{[](std::string_view) {}, [] { return std::chrono::milliseconds{0}; }};
    Settings settings_;
    Conversation conversation_{store_, settings_, log_, peerOf(1001)};
};

TEST_F(AuthorisationTest, UserWhoIsNotOnTheListIsRefusedAtTheHandshake) {
    settings_.access.users = Users{0, 1002};
    EXPECT_EQ(say("MyApp::CONNECT_APP::"),
              refusal("MyApp::ACK::", "ApplicationIsNotAuthorizedToConnect"));
    EXPECT_EQ(registerClass("Evt"),
              refusal("MyApp::REGISTER_DATACLASS::", "ApplicationIsNotConnected"));
    EXPECT_EQ(say("MyApp::GET_CONSENT::"),
              refusal("MyApp::GET_CONSENT::", "ApplicationIsNotConnected"));
    settings_.access.users->insert(1001);
    EXPECT_EQ(say("MyApp::CONNECT_APP::"), "MyApp::ACK::");
}

TEST_F(AuthorisationTest, ApplicationThatIsNotOnTheListIsRefusedAtTheHandshake) {
    allow("Other", {});
    EXPECT_EQ(say("MyApp::CONNECT_APP::"),
              refusal("MyApp::ACK::", "ApplicationIsNotAuthorizedToConnect"));
    EXPECT_EQ(collect(kEvent), refusal("MyApp::COLLECT_DATACLASS::", "ApplicationIsNotConnected"));
    EXPECT_EQ(say("Other::CONNECT_APP::"), "Other::ACK::") << "the connection is none the worse";
}

TEST_F(AuthorisationTest, ApplicationIsRefusedToAUserWhoMayNotRunIt) {
    allow("MyApp", {.users = Users{1002}});
    allow("Other", {.users = Users{1001}});
    EXPECT_EQ(say("MyApp::CONNECT_APP::"),
              refusal("MyApp::ACK::", "ApplicationIsNotAuthorizedToConnect"));
    EXPECT_EQ(say("Other::CONNECT_APP::"), "Other::ACK::");
}

TEST_F(AuthorisationTest, FormOfAHandshakeIsCheckedBeforeItsRights) {
    settings_.access.users.emplace();
    EXPECT_EQ(say("MyApp::CONNECT_APP::x"), refusal("MyApp::ACK::", "MalformedOrUnknownMessage"));
}

TEST_F(AuthorisationTest, ClassThatIsNotOnTheListIsNotRegistered) {
    allow("MyApp", {.dataClasses = {{"Evt"}}});
    say("MyApp::CONNECT_APP::");
    EXPECT_EQ(registerClass("Evt"), "MyApp::SUCCESS::");
    EXPECT_EQ(registerClass("Secret"),
              refusal("MyApp::REGISTER_DATACLASS::", "DataclassIsNotAuthorizedForThisApplication"));
    EXPECT_FALSE(store_.latestClass("MyApp", "Secret"));
}

TEST_F(AuthorisationTest, EventOfAClassThatIsNotOnTheListIsRefusedAndItsValuesAreNotKept) {
    say("MyApp::CONNECT_APP::");
    registerClass("Evt");
    registerClass("Secret");
    allow("MyApp", {.dataClasses = {{"Evt"}}});
    EXPECT_EQ(collect(kSecret + "," + kEvent),
              refusal("MyApp::COLLECT_DATACLASS::", "DataclassIsNotAuthorizedForThisApplication"));
    EXPECT_THAT(stored(), testing::ElementsAre("Secret|DataclassIsNotAuthorizedForThisApplication|"
                                               "$.events[0].data[0].Secret|",
                                               R"(Evt|||{"DT":"20240131T235959","V":"1"})"));
    EXPECT_EQ(collect(R"({"Nowhere":{}})"),
              refusal("MyApp::COLLECT_DATACLASS::", "DataclassIsNotAuthorizedForThisApplication"))
        << "a class that is not registered, neither";
}

TEST_F(AuthorisationTest, BatchWithTooManyEventsIsRefusedAsAWhole) {
    say("MyApp::CONNECT_APP::");
    registerClass("Evt");
    settings_.limits.batchEvents = 2;
    EXPECT_EQ(collect(kEvent + "," + kEvent + ",5"),
              refusal("MyApp::COLLECT_DATACLASS::", "QuotaExceeded"));
    EXPECT_THAT(stored(), testing::IsEmpty());
    EXPECT_EQ(collect(kEvent + "," + kEvent), "MyApp::SUCCESS::");
    EXPECT_EQ(collect(""), "MyApp::SUCCESS::");
}

TEST_F(AuthorisationTest, ClassWithTooManyFieldsIsRefused) {
    say("MyApp::CONNECT_APP::");
    settings_.limits.classFields = 2;
    const std::string field = R"({"id":"a","name":"","type":"","nullable":""})";
    EXPECT_EQ(registerClass("Evt", field + "," + field + "," + field),
              refusal("MyApp::REGISTER_DATACLASS::", "QuotaExceeded"));
    EXPECT_FALSE(store_.latestClass("MyApp", "Evt"));
    EXPECT_EQ(registerClass("Evt", field + "," + field), "MyApp::SUCCESS::");
}

TEST_F(AuthorisationTest, BatchIsRefusedWhenTheErrorsOfItsEventsMightNotFitTheReply) {
    say("MyApp::CONNECT_APP::");
    settings_.limits.commandBytes = 4096;
    std::string data = "5";
    for (int event = 1; event < 32; ++event) {
        data += ",5";
    }
    const std::string reply = collect(data);
    EXPECT_THAT(reply, testing::HasSubstr("MalformedJson"));
    EXPECT_LE(wide(reply).size() * sizeof(WideChar), 4096U);
    EXPECT_EQ(collect(data + ",5"), refusal("MyApp::COLLECT_DATACLASS::", "QuotaExceeded"));
    EXPECT_EQ(stored().size(), 32U);
}

TEST_F(AuthorisationTest, RefusalsOfTheStoreReachTheApplication) {
    const Limits oneADay{.eventsPerDay = 1};
    Store store(
        folder_.path() / "other.db", [] { return std::chrono::milliseconds{0}; }, oneADay);
    Conversation conversation(store, settings_, log_, peerOf(1001));
    const auto say_ = [&conversation](const std::string& text) {
        return toUtf8(conversation.execute(WideString(kTarget), 0, wide(text)).text).value();
    };
    EXPECT_EQ(say_("A::CONNECT_APP::"), "A::ACK::");
    const std::string batch =
        R"(A::COLLECT_DATACLASS::{"events":[{"appsession":{"V":"","DT":"","1":"A",)"
        R"("2":"","3":"","4":0,"5":"","6":"","7":""},"data":[1,2]}]})";
    EXPECT_EQ(say_(batch), refusal("A::COLLECT_DATACLASS::", "QuotaExceeded"));
}

}  // namespace
}  // namespace Orvel::Service
