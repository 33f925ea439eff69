#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "faults/faulty_disk.h"
#include "faults/ledger.h"
#include "faults/stored_data.h"
#include "service/sql.h"
#include "support/fault_table.h"
#include "support/temporary_folder.h"

/// The store on a disk that fails: at every write and every sync of an operation in turn.

namespace Orvel::Faults {
namespace {

using Failure = FaultyDisk::Failure;
using Service::SqlError;
using Service::Store;
using Support::Fault;

Fault full{"the disk is full"};
Fault halfWrites{"half of a write reaches the disk"};
Fault writeErrors{"a write to the disk fails"};
Fault syncErrors{"the disk cannot make a write durable"};
Fault fullAtCheckpoint{"the disk is full while the log is moved into the database"};
Fault fullAtStart{"the disk is full when the service starts"};
Fault readOnlyAtStart{"the data can only be read when the service starts"};
Fault powerCut{"the power fails after an acknowledgement"};

class DiskTest : public testing::Test {
  protected:
    std::vector<std::int32_t> stored() { return sorted(storedNumbers(database_)); }

    static std::vector<std::int32_t> sorted(std::vector<std::int32_t> numbers) {
        std::sort(numbers.begin(), numbers.end());
        return numbers;
    }

    std::vector<std::int32_t> upTo(std::int32_t end) {
        std::vector<std::int32_t> all;
        for (std::int32_t number = 0; number < end; ++number) {
            all.push_back(number);
        }
        return all;
    }

    /// Whether the batch was stored; what is there afterwards is all of it or nothing.
    bool isStored(Store& store, std::int32_t first, std::int32_t count) {
        bool acknowledged = true;
        try {
            addNumbers(store, first, count);
        } catch (const SqlError&) {
            acknowledged = false;
        }
        EXPECT_EQ(stored(), upTo(acknowledged ? first + count : first));
        return acknowledged;
    }

    /// Lets every operation of that kind fail in turn while a batch is being stored, and all that
    /// follow it.
    void failAtEveryStep(Failure failure, Fault& fault) {
        constexpr std::int32_t kEvents = 400;
        auto store = openStore(database_);
        registerNumbered(*store);
        std::int32_t next = 0;
        for (std::uint64_t step = 0;; ++step) {
            disk_.fail(failure, step);
            const bool acknowledged = isStored(*store, next, kEvents);
            const std::uint64_t failures = disk_.failures();
            disk_.heal();
            next += acknowledged ? kEvents : 0;
            if (failures == 0) {
                EXPECT_TRUE(acknowledged);
                break;
            }
            fault.inject();
            EXPECT_FALSE(acknowledged) << "although step " << step << " failed";
            fault.observe(acknowledged ? 0 : 1);
            EXPECT_EQ(integrityOf(database_), "ok");
            EXPECT_TRUE(isStored(*store, next, 1)) << "the disk works again";
            next += 1;
        }
        store.reset();
        EXPECT_EQ(integrityOf(database_), "ok");
        EXPECT_EQ((openStore(database_), stored()), upTo(next));
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path database_ = folder_.path() / "analytics.db";
    FaultyDisk disk_;
};

TEST_F(DiskTest, BatchIsRefusedWholeWhenTheDiskIsFull) { failAtEveryStep(Failure::kFull, full); }

TEST_F(DiskTest, BatchIsRefusedWholeWhenHalfOfAWriteIsDone) {
    failAtEveryStep(Failure::kHalfWrite, halfWrites);
}

TEST_F(DiskTest, BatchIsRefusedWholeWhenAWriteFails) {
    failAtEveryStep(Failure::kWrite, writeErrors);
}

TEST_F(DiskTest, BatchIsRefusedWholeWhenItCannotBeMadeDurable) {
    failAtEveryStep(Failure::kSync, syncErrors);
}

// A log of a thousand pages is moved into the database at the end of a transaction, which has been
// committed then.
TEST_F(DiskTest, BatchIsKeptWhenOnlyTheMovingOfTheLogFails) {
    const auto store = openStore(database_);
    registerNumbered(*store);
    for (const std::uint64_t step : std::vector<std::uint64_t>{0, 1, 700, 1400}) {
        disk_.fail(Failure::kFullDatabase, step);
        const std::size_t before = stored().size();
        addNumbers(*store, static_cast<std::int32_t>(before), 20, 300'000);
        fullAtCheckpoint.inject(disk_.failures() > 0 ? 1 : 0);
        EXPECT_EQ(stored(), upTo(static_cast<std::int32_t>(before) + 20));
        EXPECT_EQ(integrityOf(database_), "ok");
        fullAtCheckpoint.observe(disk_.failures() > 0 ? 1 : 0);
        disk_.heal();
    }
}

TEST_F(DiskTest, FullDiskKeepsNoServiceFromStarting) {
    {
        const auto store = openStore(database_);
        registerNumbered(*store);
        addNumbers(*store, 0, 1);
    }
    disk_.fail(Failure::kFull);
    fullAtStart.inject();
    const auto store = openStore(database_);
    EXPECT_TRUE(store->latestClass("App", "Numbered"));
    EXPECT_EQ(store->consent(), std::nullopt);
    EXPECT_FALSE(isStored(*store, 1, 1));
    fullAtStart.observe(disk_.failures() > 0 ? 1 : 0);
    disk_.heal();
    EXPECT_TRUE(isStored(*store, 1, 1));
}

TEST_F(DiskTest, DatabaseThatCannotBeMadeIsMadeAtTheNextStart) {
    disk_.fail(Failure::kFull);
    fullAtStart.inject();
    EXPECT_THROW(openStore(database_), SqlError);
    fullAtStart.observe(disk_.failures() > 0 ? 1 : 0);
    disk_.heal();
    const auto store = openStore(database_);
    registerNumbered(*store);
    EXPECT_TRUE(isStored(*store, 0, 1));
}

TEST_F(DiskTest, DataThatCanOnlyBeReadKeepsTheServiceFromStarting) {
    {
        const auto store = openStore(database_);
        registerNumbered(*store);
        addNumbers(*store, 0, 3);
    }
    disk_.fail(Failure::kReadOnly);
    EXPECT_THROW(openStore(database_), SqlError);
    readOnlyAtStart.inject(disk_.failures());
    disk_.heal();
    EXPECT_EQ(integrityOf(database_), "ok");
    const auto store = openStore(database_);
    EXPECT_TRUE(isStored(*store, 3, 1));
    readOnlyAtStart.observe();
}

// Of what was not made durable, any part may have reached the disk: each file is there either as it
// was last made durable or as it is now.
TEST_F(DiskTest, AcknowledgedEventsSurviveTheLossOfAllThatWasNotMadeDurable) {
    constexpr std::int32_t kBatches = 24;
    std::mt19937 random(20'240'131);
    const auto durable = folder_.path() / "durable";
    disk_.keepDurableCopies(durable);
    const auto store = openStore(database_);
    registerNumbered(*store);
    for (std::int32_t batch = 0; batch < kBatches; ++batch) {
        // Long events now and then, so that the log is moved and begins anew.
        addNumbers(*store, batch, 1, batch % 10 == 5 ? 4'500'000 : 10);
        const auto found = folder_.path() / "found";
        std::filesystem::remove_all(found);
        std::filesystem::create_directories(found);
        for (const char* name : {"analytics.db", "analytics.db-wal"}) {
            const auto copy = durable / name;
            const auto file = random() % 2 == 0 ? copy : folder_.path() / name;
            if (std::filesystem::exists(file)) {
                std::filesystem::copy_file(file, found / name);
            }
        }
        powerCut.inject();
        EXPECT_EQ(integrityOf(found / "analytics.db"), "ok");
        openStore(found / "analytics.db");
        const auto numbers = sorted(storedNumbers(found / "analytics.db"));
        EXPECT_EQ(numbers, upTo(batch + 1));
        powerCut.observe(numbers == upTo(batch + 1) ? 1 : 0);
    }
}

}  // namespace
}  // namespace Orvel::Faults
