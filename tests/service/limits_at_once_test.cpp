#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "limits_fixture.h"

namespace Orvel::Service {
namespace {

using testing::IsEmpty;

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
