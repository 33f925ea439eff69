#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "service/store.h"
#include "service/store_reader.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using std::chrono::days;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

/// Batches whose events are all good, or all bad.
class LimitsTest : public testing::Test {
  protected:
    void open(const Limits& limits) {
        store_.reset();
        store_ = std::make_unique<Store>(
            file_, [this] { return tellTime(); }, limits);
        store_->registerClass("App", {.name = "", .id = "Evt", .version = "1", .fields = {}});
        class_ = store_->latestClass("App", "Evt").value();
    }
    virtual milliseconds tellTime() { return now_; }

    /// @return whether it was stored.
    bool send(const std::vector<std::string>& contents, const std::string& application = "App",
              ErrorName error = {}) {
        std::vector<JudgedEvent> events;
        for (const std::string& content : contents) {
            JudgedEvent& event = events.emplace_back();
            event.error = error;
            event.content = content;
            event.dataClass = class_.id;
        }
        Session session{};
        session.application = application;
        session.counter = "0";
        return isAccepted([&] { store_->addBatch(session, 0, events); });
    }

    template <typename Operation>
    static bool isAccepted(Operation operation) {
        try {
            operation();
        } catch (const Refusal& refusal) {
            EXPECT_EQ(refusal.name(), "QuotaExceeded");
            return false;
        }
        return true;
    }

    std::vector<std::string> contents() {
        std::vector<std::string> found;
        StoreReader(file_).forEachEvent(
            {}, [&found](const EventRow& row) { found.emplace_back(row.content); });
        return found;
    }
    StoreStatus status() { return StoreReader(file_).status(utcDay(now_)); }
    std::map<std::string, std::int64_t> today() {
        std::map<std::string, std::int64_t> counts;
        for (const ApplicationCount& count : status().today) {
            counts[count.application] = count.events;
        }
        return counts;
    }
    /// What SQLite finds wrong, references that lead nowhere included.
    std::vector<std::string> faults() {
        Database database(file_, Database::Access::kReadOnly);
        std::vector<std::string> found;
        for (const char* check : {"PRAGMA foreign_key_check", "PRAGMA integrity_check"}) {
            Statement rows(database, check);
            while (rows.step()) {
                if (rows.text(0) != "ok") {
                    found.emplace_back(rows.text(0));
                }
            }
        }
        return found;
    }
    std::int64_t rowsOf(const std::string& table) {
        Database database(file_, Database::Access::kReadOnly);
        Statement count(database, "SELECT count(*) FROM " + table);
        count.step();
        return count.integer(0);
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    /// The beginning of a day.
    milliseconds now_ = days{20'000};
    std::unique_ptr<Store> store_;
    StoredClass class_;
};

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

constexpr std::int64_t kSmall = 256 << 10;
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

/// Batches that come while another one is being stored, each from a thread of its own.
class LimitsAtOnceTest : public LimitsTest {
  protected:
    using Batch = std::vector<std::string>;

    /// @return which of the batches were stored, whose contents must differ from each other's.
    std::set<Batch> sendAtOnce(const std::vector<Batch>& batches) {
        timesAsked_ = 0;
        mayGoOn_ = false;
        workers_.clear();
        std::atomic<std::size_t> coming = 0;
        std::set<Batch> accepted;
        std::vector<std::jthread> threads;
        for (const Batch& batch : batches) {
            threads.emplace_back([this, &batch, &coming, &accepted] {
                ++coming;
                const bool isStored = send(batch);
                const std::scoped_lock lock(mutex_);
                if (isStored) {
                    accepted.insert(batch);
                }
            });
        }
        timesAsked_.wait(0);
        while (coming < batches.size()) {
            std::this_thread::yield();
        }
        mayGoOn_ = true;
        mayGoOn_.notify_all();
        threads.clear();
        return accepted;
    }

    /// Batches of two events each.
    static std::vector<Batch> pairs(std::size_t count, const std::string& content) {
        std::vector<Batch> batches;
        for (std::size_t batch = 0; batch < count; ++batch) {
            batches.push_back({content + std::to_string(batch), content});
        }
        return batches;
    }

    /// Whether some thread has stored another's batch along with its own.
    bool haveShared() const { return workers_.size() < timesAsked_; }

  private:
    /// Whoever asks for the time is in the middle of storing a batch.
    milliseconds tellTime() override {
        if (++timesAsked_ == 1) {
            timesAsked_.notify_all();
            mayGoOn_.wait(false);
        }
        const std::scoped_lock lock(mutex_);
        workers_.insert(std::this_thread::get_id());
        return now_;
    }

    std::mutex mutex_;
    std::set<std::thread::id> workers_;
    std::atomic<std::size_t> timesAsked_ = 0;
    std::atomic<bool> mayGoOn_ = true;
};

TEST_F(LimitsAtOnceTest, BatchesThatShareATransactionShareTheEventsOfTheDay) {
    open({.eventsPerDay = 7});
    std::size_t stored = 0;
    do {
        EXPECT_EQ(sendAtOnce(pairs(5, "x")).size(), 3U);
        EXPECT_EQ(today()["App"], 6);
        stored += 6;
        EXPECT_EQ(contents().size(), stored);
        now_ += days{1};
    } while (!haveShared());
}

TEST_F(LimitsAtOnceTest, BatchesForWhichATransactionHasNoRoomAreStoredOneAfterTheOther) {
    open({.storedBytes = kSmall});
    const std::vector<Batch> large = pairs(5, std::string(kSmall / 4, 'x'));
    std::size_t sent = 0;
    do {
        EXPECT_EQ(sendAtOnce(large).size(), large.size());
        sent += 2 * large.size();
        EXPECT_EQ(contents().size() + static_cast<std::size_t>(status().forRoom.events), sent);
        EXPECT_EQ(today()["App"], static_cast<std::int64_t>(sent));
        EXPECT_LE(status().bytes, kSmall);
    } while (!haveShared());
    EXPECT_THAT(faults(), IsEmpty());
}

TEST_F(LimitsAtOnceTest, BatchIsToldWhatBecameOfItInTheEnd) {
    open({.eventsPerDay = 3, .storedBytes = kSmall});
    // What the first one takes of the day in a shared transaction is the other's after all.
    const Batch tooLarge = {std::string(kSmall, 'x'), "with it"};
    const Batch small = {"small", "too"};
    for (int shared = 0; shared < 10;) {
        const auto stored = sendAtOnce({{}, tooLarge, small});
        EXPECT_EQ(stored, (std::set<Batch>{{}, small}));
        EXPECT_EQ(today()["App"], 2);
        shared += haveShared() ? 1 : 0;
        now_ += days{1};
    }
    EXPECT_EQ(contents().size() % 2, 0U);
}

}  // namespace
}  // namespace Orvel::Service
