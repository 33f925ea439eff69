#include "service/listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "service/log.h"
#include "service/store.h"
#include "service/visible_text.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;

class ListingTest : public testing::Test {
  protected:
    void SetUp() override {
        store_.registerClass(session_.application,
                             {.name = "Name",
                              .id = "Evt",
                              .version = "1",
                              .fields = {{"count", "Count", "false", "integer"}}});
        const auto known = store_.latestClass(session_.application, "Evt").value();
        JudgedEvent good;
        good.content = goodContent_;
        good.dataClass = known.id;
        good.time = "20240131T235959";
        JudgedEvent bad;
        bad.content = badContent_;
        bad.error = ErrorNames::kUnregisteredDataclass;
        bad.path = "$.events[0].data[1].Other";
        bad.className = "Other";
        store_.addBatch(session_, 1001, {good, bad});
    }

    std::string events(ListingForm form, const EventFilter& filter = {}) {
        std::string text;
        StoreReader reader(file_);
        listEvents(reader, filter, form, [&text](std::string_view piece) { text += piece; });
        return text;
    }
    std::string classes(ListingForm form) {
        std::string text;
        StoreReader reader(file_);
        listClasses(reader, form, [&text](std::string_view piece) { text += piece; });
        return text;
    }
    static std::vector<json> lines(const std::string& text) {
        std::vector<json> all;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            all.push_back(json::parse(line));
        }
        return all;
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    Store store_{file_, [] { return std::chrono::milliseconds{1'700'000'000'123}; }};
    const std::string goodContent_ =
        "{\n\t\"count\": 12345678901234567890,\"t\":\"\x7F\u009B\u202E\u4E2D\"}";
    const std::string badContent_ = "{\"Other\":\n{}}";
    Session session_{.versionTag = "tag",
                     .started = "20240131T000000",
                     .application = "My\x1B[31m\nApp",
                     .applicationVersion = "2",
                     .id = "{S}",
                     .counter = "3",
                     .user = "u",
                     .device = "d",
                     .environment = "Production"};
};

TEST_F(ListingTest, JsonHasOneObjectALineWithEverythingThatIsKnown) {
    const auto all = lines(events(ListingForm::kJson));
    ASSERT_EQ(all.size(), 2U);
    json good = all[0];
    EXPECT_GT(std::stoll(good["id"].get<std::string>()), 0);
    good.erase("id");
    EXPECT_EQ(good, (json{{"received", "2023-11-14T22:13:20.123Z"},
                          {"application", session_.application},
                          {"application_version", "2"},
                          {"session", "{S}"},
                          {"session_counter", 3},
                          {"session_started", "20240131T000000"},
                          {"user", "u"},
                          {"device", "d"},
                          {"environment", "Production"},
                          {"uid", 1001},
                          {"class", "Evt"},
                          {"version", nullptr},
                          {"time", "20240131T235959"},
                          {"values", json::parse(goodContent_)}}));
    EXPECT_EQ(all[1]["error"], "UnregisteredDataclass");
    EXPECT_EQ(all[1]["path"], "$.events[0].data[1].Other");
    EXPECT_EQ(all[1]["text"], badContent_);
    EXPECT_EQ(all[1]["class"], "Other");
    EXPECT_FALSE(all[1].contains("values"));
}

TEST_F(ListingTest, JsonKeepsEveryDigit) {
    EXPECT_THAT(events(ListingForm::kJson), HasSubstr(R"("count": 12345678901234567890,)"));
}

TEST_F(ListingTest, NothingThatIsStoredSteersATerminal) {
    for (const ListingForm form : {ListingForm::kText, ListingForm::kJson}) {
        const std::string text = events(form) + classes(form);
        for (const char* steering : {"\x1B", "\x7F", "\u009B", "\u202E", "\t"}) {
            EXPECT_THAT(text, Not(HasSubstr(steering)));
        }
    }
}

TEST_F(ListingTest, TextHasALineForEveryEventUnderAHeading) {
    const std::string text = events(ListingForm::kText);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    EXPECT_THAT(text, testing::StartsWith("RECEIVED"));
    EXPECT_THAT(text, HasSubstr(R"(My\u001b[31m\u000aApp)"));
    EXPECT_THAT(text, HasSubstr("UnregisteredDataclass at $.events[0].data[1].Other: "
                                "{\"Other\": {}}"));
}

TEST_F(ListingTest, ClassesAreListedWithTheirFields) {
    const auto all = lines(classes(ListingForm::kJson));
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0], (json{{"application", session_.application},
                            {"id", "Evt"},
                            {"version", "1"},
                            {"name", "Name"},
                            {"fields", json::array({{{"id", "count"},
                                                     {"name", "Count"},
                                                     {"nullable", "false"},
                                                     {"type", "integer"}}})},
                            {"first_registered", "2023-11-14T22:13:20.123Z"},
                            {"last_registered", "2023-11-14T22:13:20.123Z"},
                            {"latest", true}}));
    EXPECT_THAT(classes(ListingForm::kText), HasSubstr("Evt 1 (Name)"));
    EXPECT_THAT(classes(ListingForm::kText), HasSubstr("integer"));
}

TEST(VisibleTextTest, LeavesOrdinaryTextAlone) {
    const std::string text = "a\\\"~\u00A0\u00E9\u4E2D\uFFFD\U0001F600\U0010FFFF";
    EXPECT_EQ(visibleText(text), text);
}

TEST(VisibleTextTest, EscapesWhatSteers) {
    EXPECT_EQ(visibleText("\0\n\x1F\x7F\u0080\u009F\u061C\u200E\u2028\u202E\u2066\u2069"s),
              R"(\u0000\u000a\u001f\u007f\u0080\u009f\u061c\u200e\u2028\u202e\u2066\u2069)");
}

TEST(VisibleTextTest, SurvivesACharacterThatIsCutOff) {
    EXPECT_EQ(visibleText("\xE4\xB8"), "\xE4\xB8");
    EXPECT_EQ(visibleText("\xC2"), "\xC2");
}

TEST(LogTest, WritesOneLineOfJsonAnEvent) {
    std::string lines;
    Log log([&lines](std::string_view line) { lines += line; },
            [] { return std::chrono::milliseconds{0}; });
    log.write("failed", {{"reason", "a \"bad\"\nthing"}});
    log.write("stopped");
    EXPECT_EQ(lines,
              "{\"time\":\"1970-01-01T00:00:00.000Z\",\"event\":\"failed\","
              "\"reason\":\"a \\\"bad\\\"\\nthing\"}\n"
              "{\"time\":\"1970-01-01T00:00:00.000Z\",\"event\":\"stopped\"}\n");
}

}  // namespace
}  // namespace Orvel::Service
