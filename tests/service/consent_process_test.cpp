#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "client.h"
#include "support/service_process.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kAnswers =
    R"({"marketing":"Accepted","support":"Rejected","product_enhancement":"Unknown"})";

class ConsentProcessTest : public testing::Test {
  protected:
    void start() {
        service_.start();
        service_.useEndpoint();
    }
    static void connect(Client& client) {
        ASSERT_EQ(client.say("MyApp::CONNECT_APP::"), u"MyApp::ACK::");
    }
    /// The record, asked for on a connection of its own. It holds ASCII characters only.
    static json record() {
        Client client;
        connect(client);
        const auto reply = client.say("MyApp::GET_CONSENT::");
        const std::string text(reply.begin(), reply.end());
        const std::string begin = "MyApp::CONSENT_RECORD::";
        EXPECT_THAT(text, testing::StartsWith(begin));
        return json::parse(text.substr(begin.size()));
    }
    static Relay::WideString set(const std::string& document) {
        Client client;
        connect(client);
        return client.say("MyApp::SET_CONSENT::" + document);
    }
    /// The changes of the consent as the service's own listing has them.
    std::vector<json> history() {
        const auto output = service_.run({"consent", "--history", "--json"});
        EXPECT_EQ(output.status, 0) << output.error;
        std::vector<json> changes;
        std::istringstream lines(output.out);
        for (std::string line; std::getline(lines, line);) {
            changes.push_back(json::parse(line));
        }
        return changes;
    }
    /// What a service logs as the reason not to start with these settings.
    std::string reasonNotToStart(const std::string& settings) {
        std::ofstream(folder() / "bad.toml") << settings;
        return reasonNotToStart(
            std::vector<std::string>{"--settings", (folder() / "bad.toml").string()}, {});
    }
    std::string reasonNotToStart(const std::vector<std::string>& arguments,
                                 std::vector<std::string> environment) {
        std::vector<std::string> words = {"serve", "--data", service_.dataFolder().string()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        environment.push_back("ORVEL_RPC_DIRECTORY=" + service_.endpointFolder().string());
        const auto output = Support::runProgram(ORVEL_ANALYTICSD, words, environment);
        EXPECT_EQ(output.status, 1);
        EXPECT_FALSE(exists(service_.dataFolder()));
        std::istringstream lines(output.error);
        std::string line;
        for (std::string next; std::getline(lines, next);) {
            line = next;
        }
        EXPECT_EQ(json::parse(line)["event"], "failed");
        return json::parse(line)["reason"];
    }
    std::filesystem::path folder() const { return service_.endpointFolder().parent_path(); }

    Support::ServiceProcess service_{ORVEL_ANALYTICSD};
};

TEST_F(ConsentProcessTest, ConsentSetOnOneConnectionIsReadOnAnother) {
    start();
    EXPECT_EQ(record()["timestamp"], "");
    EXPECT_EQ(record()["consent_source"], "default");
    EXPECT_EQ(set(kAnswers), u"MyApp::SUCCESS::");
    EXPECT_EQ(record()["processing_permissions"], json::parse(kAnswers));
    EXPECT_EQ(record()["consent_source"], "application");
    EXPECT_THAT(record()["timestamp"], EndsWith("Z"));
}

TEST_F(ConsentProcessTest, ConsentSurvivesAKill) {
    for (const std::string marketing : {"Accepted", "Rejected", "Unknown", "Accepted"}) {
        json answers = json::parse(kAnswers);
        answers["marketing"] = marketing;
        start();
        ASSERT_EQ(set(answers.dump()), u"MyApp::SUCCESS::");
        const json before = record();
        service_.kill();
        start();
        EXPECT_EQ(record(), before);
        EXPECT_EQ(record()["processing_permissions"]["marketing"], marketing);
        service_.kill();
    }
    EXPECT_EQ(history().size(), 4U) << "while no service runs";
}

TEST_F(ConsentProcessTest, ShowsTheConsentAndItsHistoryWhileItRuns) {
    service_.useSettings("tenant = 'a tenant'");
    start();
    ASSERT_EQ(set(kAnswers), u"MyApp::SUCCESS::");
    const auto changes = history();
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_EQ(changes[0]["application"], "MyApp");
    EXPECT_EQ(changes[0]["uid"], ::getuid());
    EXPECT_EQ(changes[0]["timestamp"], record()["timestamp"]);
    EXPECT_EQ(changes[0]["before"]["marketing"], "Unknown");
    EXPECT_EQ(changes[0]["after"], json::parse(kAnswers));
    const auto shown =
        service_.run({"consent", "--json", "--settings", service_.settingsFile().string()});
    EXPECT_EQ(json::parse(shown.out), record());
    EXPECT_THAT(service_.run({"consent", "--settings", service_.settingsFile().string()}).out,
                HasSubstr("a tenant"));
    EXPECT_THAT(service_.run({"consent", "--history"}).out, HasSubstr("Unknown -> Accepted"));
}

TEST_F(ConsentProcessTest, ManagedDeviceRefusesAnyChange) {
    service_.useSettings("managed = true\nconsent_source = 'policy'");
    start();
    EXPECT_EQ(set(kAnswers),
              u"MyApp::SET_CONSENT::"
              u"{\"Results\":[\"ErrorCode :UnableToSetConsentForManagedDevice\"]}");
    EXPECT_EQ(record()["managed"], true);
    EXPECT_EQ(record()["consent_source"], "policy");
    EXPECT_EQ(record()["timestamp"], "");
    EXPECT_TRUE(history().empty());
}

TEST_F(ConsentProcessTest, ConsentThatWasSetBeforeTheDeviceWasManagedStays) {
    start();
    ASSERT_EQ(set(kAnswers), u"MyApp::SUCCESS::");
    service_.stop();
    service_.useSettings("managed = true");
    start();
    EXPECT_EQ(record()["processing_permissions"], json::parse(kAnswers));
}

TEST_F(ConsentProcessTest, NothingIsCollectedWhenDataMayNotBeProcessed) {
    service_.useSettings("process_data = false");
    start();
    Client client;
    connect(client);
    ASSERT_EQ(client.say(R"(MyApp::REGISTER_DATACLASS::{"name":"","id":"Evt","version":"1",)"
                         R"("fields":[]})"),
              u"MyApp::SUCCESS::");
    EXPECT_EQ(client.say(R"(MyApp::COLLECT_DATACLASS::{"events":[{"appsession":{"V":"1","DT":"",)"
                         R"("1":"MyApp","2":"2","3":"S","4":0,"5":"U","6":"D","7":"P"},)"
                         R"("data":[{"Evt":{"DT":"20240131T235959"}},5]}]})"),
              u"MyApp::COLLECT_DATACLASS::{\"Results\":[\"ErrorCode :NotRightAccessToWrite\"]}");
    EXPECT_EQ(service_.run({"events", "--count"}).out, "0\n");
    EXPECT_EQ(record()["process_data"], false);
}

TEST_F(ConsentProcessTest, AddressesComeFromTheSettings) {
    service_.useSettings("privacy_documents.privacyurl = 'https://example.com/p'");
    start();
    Client client;
    connect(client);
    EXPECT_EQ(client.say("MyApp::GET_PRIVACY_DOCUMENTS::"),
              u"MyApp::PRIVACY_DOCUMENTS::{\"privacyurl\":\"https://example.com/p\","
              u"\"warrantyurl\":\"\",\"telemetryurl\":\"\"}");
}

TEST_F(ConsentProcessTest, DoesNotStartWithWrongSettings) {
    const std::string file = (folder() / "bad.toml").string();
    EXPECT_EQ(reasonNotToStart("# managed\n\nmanagd = true\n"),
              file + ":3:1: unknown key \"managd\"");
    EXPECT_EQ(reasonNotToStart("tenant = 'a'\nmanaged = 1\n"),
              file + ":2:11: this must be true or false");
    EXPECT_THAT(reasonNotToStart("\nmanaged = ?\n"), testing::StartsWith(file + ":2:11: "));
}

TEST_F(ConsentProcessTest, SettingsFileThatIsNamedMustBeThere) {
    const std::string missing = (folder() / "missing.toml").string();
    EXPECT_EQ(reasonNotToStart({"--settings", missing}, {}),
              "cannot read the settings file " + missing + ": No such file or directory");
}

TEST_F(ConsentProcessTest, SettingsOfTheUserAreReadWhenNoneAreNamed) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root's settings are the machine's own";
    }
    const auto place = folder() / "config/orvel-analytics/settings.toml";
    create_directories(place.parent_path());
    std::ofstream(place) << "managed = 5";
    EXPECT_EQ(reasonNotToStart({}, {"XDG_CONFIG_HOME=" + (folder() / "config").string()}),
              place.string() + ":1:11: this must be true or false");
}

TEST_F(ConsentProcessTest, LogSaysWhichSettingsAreInForce) {
    start();
    EXPECT_EQ(json::parse(service_.log().front())["settings"], service_.settingsFile().string());
}

}  // namespace
}  // namespace Orvel::Service
