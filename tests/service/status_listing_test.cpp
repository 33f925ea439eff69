#include "service/status_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

#include "service/store.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using std::chrono::days;
using testing::HasSubstr;

class StatusListingTest : public testing::Test {
  protected:
    void send(const std::string& application) {
        JudgedEvent event;
        event.error = ErrorNames::kMalformedJson;
        event.content = "5";
        Session session{};
        session.application = application;
        session.counter = "0";
        store_.addBatch(session, 0, {event, event});
    }
    std::string show(ListingForm form, const Limits& limits) {
        std::string text;
        StoreReader reader(file_);
        showStatus(reader, limits, now_, form, [&text](std::string_view piece) { text += piece; });
        return text;
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    std::chrono::milliseconds now_ = days{20'000};
    const Limits limits_{.eventsPerDay = 10, .storedBytes = 5'000'000, .storedDays = 2};
    Store store_{file_, [this] { return now_; }, limits_};
};

TEST_F(StatusListingTest, JsonHasEveryCountBesideItsLimit) {
    send("App");
    now_ += days{3};
    send("My\x1B[31mApp");
    send("App");
    send("App");
    const json status = json::parse(show(ListingForm::kJson, limits_));
    EXPECT_GT(status["stored_bytes"], 0);
    EXPECT_EQ(status["stored_bytes"].get<std::uintmax_t>() % 4096, 0U);
    EXPECT_LE(status["stored_bytes"], std::filesystem::file_size(file_) + 5'000'000);
    EXPECT_EQ(status["stored_bytes_limit"], 5'000'000);
    EXPECT_EQ(status["stored_days_limit"], 2);
    EXPECT_EQ(status["oldest_received"], "2024-10-07T00:00:00.000Z");
    EXPECT_EQ(status["removed_for_age"],
              (json{{"batches", 1}, {"events", 2}, {"last", "2024-10-07T00:00:00.000Z"}}));
    EXPECT_EQ(status["removed_for_room"], (json{{"batches", 0}, {"events", 0}, {"last", nullptr}}));
    EXPECT_EQ(status["events_per_day_limit"], 10);
    EXPECT_EQ(status["events_today"], (json{{{"application", "App"}, {"events", 4}},
                                            {{"application", "My\x1B[31mApp"}, {"events", 2}}}));
    EXPECT_EQ(status.size(), 8U);
}

TEST_F(StatusListingTest, CountsOfAnotherDayAreNotShown) {
    send("App");
    now_ += days{1};
    EXPECT_EQ(json::parse(show(ListingForm::kJson, limits_))["events_today"], json::array());
}

TEST_F(StatusListingTest, MissingLimitsAreNull) {
    const json status = json::parse(
        show(ListingForm::kJson, {.eventsPerDay = 0, .storedBytes = 0, .storedDays = 0}));
    EXPECT_EQ(status["stored_bytes_limit"], nullptr);
    EXPECT_EQ(status["stored_days_limit"], nullptr);
    EXPECT_EQ(status["events_per_day_limit"], nullptr);
    EXPECT_EQ(status["oldest_received"], nullptr);
    EXPECT_THAT(show(ListingForm::kText, {.storedBytes = 0}), HasSubstr(", no limit\n"));
}

TEST_F(StatusListingTest, TextHasALineForEachAndSteersNoTerminal) {
    send("App");
    now_ += days{3};
    send("My\x1B[31mApp");
    const std::string text = show(ListingForm::kText, limits_);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6);
    EXPECT_THAT(text, HasSubstr(", of 5000000\n"));
    EXPECT_THAT(text, HasSubstr("2 events in 1 batches, last 2024-10-07T00:00:00.000Z\n"));
    EXPECT_THAT(text, HasSubstr("0 events in 0 batches, last never\n"));
    EXPECT_THAT(text, HasSubstr("2, of 10: My\\u001b[31mApp\n"));
}

}  // namespace
}  // namespace Orvel::Service
