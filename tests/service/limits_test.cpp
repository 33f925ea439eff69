#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "limits_fixture.h"

namespace Orvel::Service {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(LimitsTest, EventsOfADayAreLimitedForEachApplication) {
    open({.eventsPerDay = 3});
    EXPECT_FALSE(send({"1", "2", "3", "4"}));
    EXPECT_TRUE(send({"1", "2"}));
    EXPECT_FALSE(send({"3", "4"}));
    EXPECT_TRUE(send({"3"}));
    EXPECT_FALSE(send({"4"}));
    EXPECT_TRUE(send({})) << "no event is none too many";
    EXPECT_TRUE(send({"other"}, "Other"));
    EXPECT_THAT(contents(), ElementsAre("1", "2", "3", "other"));
    EXPECT_EQ(today(), (std::map<std::string, std::int64_t>{{"App", 3}, {"Other", 1}}));
}

TEST_F(LimitsTest, RefusedBatchLeavesNoTrace) {
    open({.eventsPerDay = 1});
    EXPECT_FALSE(send({"1", "2"}, "Unknown"));
    EXPECT_EQ(rowsOf("batch"), 0);
    EXPECT_EQ(rowsOf("daily_count"), 0);
    EXPECT_EQ(rowsOf("application"), 1) << "the one that has registered a class";
}

TEST_F(LimitsTest, BadEventsCountToo) {
    open({.eventsPerDay = 2});
    EXPECT_TRUE(send({"1", "2"}, "App", ErrorNames::kMalformedJson));
    EXPECT_FALSE(send({"3"}));
}

TEST_F(LimitsTest, CountBeginsAnewAtMidnight) {
    open({.eventsPerDay = 1});
    now_ += days{1} - milliseconds{1};
    EXPECT_TRUE(send({"1"}));
    EXPECT_FALSE(send({"2"}));
    now_ += milliseconds{1};
    EXPECT_TRUE(send({"2"}));
    EXPECT_FALSE(send({"3"}));
    now_ -= days{300};
    EXPECT_TRUE(send({"3"})) << "a clock that is set right must not lock anybody out";
}

TEST_F(LimitsTest, CountSurvivesARestart) {
    open({.eventsPerDay = 3});
    EXPECT_TRUE(send({"1", "2"}));
    open({.eventsPerDay = 3});
    EXPECT_FALSE(send({"3", "4"}));
    EXPECT_TRUE(send({"3"}));
    open({.eventsPerDay = 1});
    EXPECT_FALSE(send({"4"})) << "also when the limit is lower than what is stored already";
    open({.eventsPerDay = 0});
    EXPECT_TRUE(send({"4"})) << "0 is no limit";
    EXPECT_EQ(today()["App"], 4);
}

TEST_F(LimitsTest, OldEventsGoWhenTheyAreOlderThanTheirDays) {
    open({.storedDays = 2});
    send({"good", "good"});
    send({"bad"}, "App", ErrorNames::kMalformedJson);
    now_ += milliseconds{1};
    send({"later"});
    now_ += days{2} - milliseconds{1};
    send({"last"});
    EXPECT_EQ(contents().size(), 5U);
    now_ += milliseconds{1};
    send({"new"});
    EXPECT_THAT(contents(), ElementsAre("later", "last", "new"));
    EXPECT_EQ(status().forAge.batches, 2);
    EXPECT_EQ(status().forAge.events, 3);
    EXPECT_EQ(status().forAge.last, now_.count());
    EXPECT_EQ(status().forRoom.batches, 0);
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(LimitsTest, OldEventsGoAlsoWhenNothingNewComes) {
    open({.storedDays = 1});
    send({"1"});
    send({"2"});
    send({"3"});
    EXPECT_FALSE(store_->removeSome());
    EXPECT_EQ(contents().size(), 3U);
    now_ += days{2};
    EXPECT_TRUE(store_->removeSome(2)) << "there is more";
    EXPECT_THAT(contents(), ElementsAre("3"));
    EXPECT_FALSE(store_->removeSome(2));
    EXPECT_THAT(contents(), IsEmpty());
    EXPECT_EQ(status().oldest, std::nullopt);
    EXPECT_EQ(status().forAge.batches, 3);
}

TEST_F(LimitsTest, BatchFromTheFutureKeepsNoOldOneAlive) {
    open({.storedDays = 1});
    now_ += days{1000};
    send({"future"});
    now_ -= days{1000};
    send({"present"});
    now_ += days{2};
    send({"new"});
    EXPECT_THAT(contents(), ElementsAre("future", "new"));
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(LimitsTest, IdentifiersGoOnWhenEverythingIsGone) {
    open({.storedDays = 1});
    send({"1"});
    std::int64_t last = 0;
    const auto remember = [&last](const EventRow& row) { last = row.id; };
    StoreReader(file_).forEachEvent({}, remember);
    now_ += days{2};
    store_->removeSome();
    now_ -= days{2000};
    Database(file_, Database::Access::kReadWrite).execute("UPDATE data_class SET registration = 1");
    open({});
    const std::int64_t before = last;
    send({"2"});
    StoreReader(file_).forEachEvent({}, remember);
    EXPECT_GT(last, before);
}

TEST_F(LimitsTest, NothingIsTooOldWithoutALimit) {
    open({.storedBytes = 0, .storedDays = 0});
    send({"1"});
    now_ += days{100'000};
    send({"2"});
    EXPECT_EQ(contents().size(), 2U);
}

const std::string kLongText(10'000, 'x');

TEST_F(LimitsTest, OldestBatchesMakeRoomForNewOnes) {
    open({.storedBytes = kSmall});
    for (int batch = 0; batch < 60; ++batch) {
        ASSERT_TRUE(send({std::to_string(batch), kLongText}));
        ASSERT_LE(status().bytes, kSmall);
        const auto stored = contents();
        const auto removed = static_cast<std::size_t>(status().forRoom.batches);
        ASSERT_EQ(stored.size() + 2 * removed, 2U * static_cast<std::size_t>(batch + 1));
        ASSERT_EQ(stored[0], std::to_string(removed)) << "the oldest ones went";
    }
    EXPECT_GT(status().forRoom.batches, 30);
    EXPECT_EQ(status().forRoom.events, 2 * status().forRoom.batches);
    EXPECT_EQ(status().forAge.batches, 0);
    EXPECT_THAT(faults(), IsEmpty());
    EXPECT_LT(std::filesystem::file_size(file_), 2 * kSmall) << "room is used again";
}

TEST_F(LimitsTest, BatchForWhichThereIsNoRoomIsRefusedAndRemovesNothing) {
    open({.storedBytes = kSmall});
    EXPECT_TRUE(send({"first"}));
    EXPECT_FALSE(send({std::string(kSmall, 'x')}));
    EXPECT_THAT(contents(), ElementsAre("first"));
    EXPECT_EQ(status().forRoom.batches, 0);
    EXPECT_EQ(today()["App"], 1);
}

TEST_F(LimitsTest, RegistrationsAndConsentsHaveNoRoomBeyondTheLimitEither) {
    open({.storedBytes = kSmall});
    send({kLongText});
    int accepted = 0;
    const auto register_ = [&] {
        store_->registerClass(
            "App",
            {.name = kLongText, .id = std::to_string(accepted), .version = "1", .fields = {}});
    };
    while (isAccepted(register_)) {
        ASSERT_LT(++accepted, 1000);
        ASSERT_LE(status().bytes, kSmall);
    }
    EXPECT_GT(accepted, 10);
    EXPECT_THAT(contents(), IsEmpty());
    EXPECT_EQ(status().forRoom.batches, 1);
    EXPECT_FALSE(store_->latestClass("App", std::to_string(accepted)));
    EXPECT_FALSE(isAccepted([&] { store_->setConsent("A new one" + kLongText, 0, {}); }));
    EXPECT_EQ(store_->consent(), std::nullopt);
}

TEST_F(LimitsTest, LowerLimitTakesAwayWhatIsAboveIt) {
    open({});
    for (int batch = 0; batch < 60; ++batch) {
        send({kLongText});
    }
    ASSERT_GT(status().bytes, kSmall);
    store_.reset();
    Store store(file_, [this] { return now_; }, {.storedBytes = kSmall});
    int pieces = 0;
    while (store.removeSome(5)) {
        ++pieces;
    }
    EXPECT_GT(pieces, 1);
    EXPECT_LE(status().bytes, kSmall);
    EXPECT_GT(contents().size(), 10U);
    EXPECT_THAT(faults(), IsEmpty());
}

}  // namespace
}  // namespace Orvel::Service
