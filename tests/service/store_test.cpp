#include "service/store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "service/schema.h"
#include "service/store_reader.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class StoreTest : public testing::Test {
  protected:
    std::unique_ptr<Store> open() {
        return std::make_unique<Store>(file_, [this] { return now_; });
    }

    static JudgedEvent good(const StoredClass& owner, std::string_view content) {
        JudgedEvent event;
        event.content = content;
        event.dataClass = owner.id;
        event.time = "20240131T235959";
        return event;
    }

    static DataClass dataClass(const std::string& version = "1", std::vector<Field> fields = {}) {
        return {.name = "An event", .id = "Evt", .version = version, .fields = std::move(fields)};
    }

    std::vector<std::string> contents(const EventFilter& filter = {}) {
        std::vector<std::string> found;
        StoreReader(file_).forEachEvent(
            filter, [&found](const EventRow& row) { found.emplace_back(row.content); });
        return found;
    }

    std::string failureOfOpening() {
        try {
            open();
        } catch (const SqlError& error) {
            return error.what();
        }
        return "(none)";
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    std::chrono::milliseconds now_{1'700'000'000'000};
    Session session_{.versionTag = "",
                     .started = "",
                     .application = "App",
                     .applicationVersion = "",
                     .id = "",
                     .counter = "0",
                     .user = "",
                     .device = "",
                     .environment = ""};
};

TEST_F(StoreTest, KeepsEverythingWhenItIsOpenedAgain) {
    const std::vector<Field> fields = {{"a\0b"s, "\"n\"\n", "", "varchar(3)"}, {"c", "", "x", ""}};
    {
        const auto store = open();
        ASSERT_EQ(store->registerClass("App", dataClass("1", fields)), Registered::kAccepted);
        const auto known = store->latestClass("App", "Evt");
        ASSERT_TRUE(known);
        store->addBatch(session_, 0, {good(*known, "{}")});
    }
    const auto known = open()->latestClass("App", "Evt");
    ASSERT_TRUE(known);
    EXPECT_EQ(known->fields, fields);
    EXPECT_THAT(contents(), ElementsAre("{}"));
}

TEST_F(StoreTest, KeepsNulCharactersInNamesApart) {
    const auto store = open();
    store->registerClass("App\0x"s, dataClass());
    EXPECT_FALSE(store->latestClass("App", "Evt"));
    EXPECT_FALSE(store->latestClass("App\0y"s, "Evt"));
    EXPECT_TRUE(store->latestClass("App\0x"s, "Evt"));
}

TEST_F(StoreTest, LatestRegistrationIsTheOneMadeLast) {
    const auto store = open();
    const auto register_ = [&](const std::string& version, const std::string& id) {
        return store->registerClass("App", dataClass(version, {{id, "", "", ""}}));
    };
    EXPECT_EQ(register_("1", "a"), Registered::kAccepted);
    EXPECT_EQ(register_("2", "b"), Registered::kAccepted);
    EXPECT_EQ(store->latestClass("App", "Evt")->fields[0].id, "b");
    EXPECT_EQ(register_("1", "a"), Registered::kAccepted);
    EXPECT_EQ(store->latestClass("App", "Evt")->fields[0].id, "a");
    EXPECT_EQ(register_("2", "c"), Registered::kConflict);
    EXPECT_EQ(store->latestClass("App", "Evt")->fields[0].id, "a");
}

TEST_F(StoreTest, ListsEventsInTheirOrderAlsoWhenTheClockGoesBack) {
    const auto store = open();
    store->registerClass("App", dataClass());
    const auto known = store->latestClass("App", "Evt").value();
    JudgedEvent bad;
    bad.error = ErrorNames::kMalformedJson;
    bad.content = "2";
    store->addBatch(session_, 0, {good(known, "1"), bad, good(known, "3")});
    now_ -= std::chrono::hours{1};
    store->addBatch(session_, 0, {good(known, "4")});
    EXPECT_THAT(contents(), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(contents({.kind = EventFilter::Kind::kGood}), ElementsAre("1", "3", "4"));
    EXPECT_THAT(contents({.kind = EventFilter::Kind::kRefused}), ElementsAre("2"));
    EXPECT_THAT(contents({.limit = 2}), ElementsAre("1", "2"));
}

TEST_F(StoreTest, StoresAnyNumberOfEventsInTheirOrder) {
    const auto store = open();
    store->registerClass("App", dataClass());
    const auto known = store->latestClass("App", "Evt").value();
    std::vector<std::string> expected;
    for (const std::size_t count : std::vector<std::size_t>{0, 1, 15, 16, 17, 32, 100}) {
        const std::size_t begin = expected.size();
        for (std::size_t event = 0; event < count; ++event) {
            expected.push_back(std::to_string(expected.size()));
        }
        std::vector<JudgedEvent> events;
        for (std::size_t event = begin; event < expected.size(); ++event) {
            events.push_back(good(known, expected[event]));
            if (event % 7 == 3) {
                events.back().error = ErrorNames::kMalformedJson;
            } else if (event % 2 == 0) {
                events.back().version = "1";
            }
        }
        store->addBatch(session_, 0, events);
        EXPECT_EQ(contents(), expected);
    }
    std::size_t row = 0;
    StoreReader(file_).forEachEvent({}, [&row](const EventRow& event) {
        EXPECT_EQ(event.error.empty(), row % 7 != 3) << row;
        EXPECT_EQ(event.version.has_value(), row % 7 != 3 && row % 2 == 0) << row;
        ++row;
    });
    EXPECT_EQ(row, expected.size());
}

TEST_F(StoreTest, FiltersByClassAndApplication) {
    const auto store = open();
    store->registerClass("App", dataClass());
    JudgedEvent bad;
    bad.error = ErrorNames::kUnregisteredDataclass;
    bad.className = "Other";
    bad.content = "bad";
    store->addBatch(session_, 0, {good(store->latestClass("App", "Evt").value(), "good"), bad});
    EXPECT_THAT(contents({.className = "Evt"}), ElementsAre("good"));
    EXPECT_THAT(contents({.className = "Other"}), ElementsAre("bad"));
    EXPECT_THAT(contents({.application = "App"}), ElementsAre("good", "bad"));
    EXPECT_THAT(contents({.application = "Nobody"}), ElementsAre());
    EXPECT_EQ(StoreReader(file_).countEvents({}), 2);
    EXPECT_EQ(StoreReader(file_).countEvents({.className = "Other"}), 1);
}

TEST_F(StoreTest, ListsEventsWithoutSortingThem) {
    open();
    Database database(file_, Database::Access::kReadWrite);
    for (const auto kind :
         {EventFilter::Kind::kAll, EventFilter::Kind::kGood, EventFilter::Kind::kRefused}) {
        Statement plan(database, "EXPLAIN QUERY PLAN " + eventQuery(kind));
        while (plan.step()) {
            EXPECT_THAT(std::string(plan.text(3)), testing::Not(HasSubstr("TEMP B-TREE")));
        }
    }
}

TEST_F(StoreTest, RefusesDataOfANewerVersion) {
    open();
    Database(file_, Database::Access::kReadWrite).execute("PRAGMA user_version = 99");
    EXPECT_THAT(failureOfOpening(), HasSubstr("newer version"));
    EXPECT_THROW(StoreReader{file_}, SqlError);
}

TEST_F(StoreTest, RefusesAnotherProgramsDatabase) {
    Database(file_, Database::Access::kReadWrite).execute("CREATE TABLE theirs(x)");
    EXPECT_THAT(failureOfOpening(), HasSubstr("not a database of this program"));
    EXPECT_THROW(StoreReader{file_}, SqlError);
}

TEST_F(StoreTest, WritesDurably) {
    open();
    Database database(file_, Database::Access::kReadOnly);
    Statement mode(database, "PRAGMA journal_mode");
    ASSERT_TRUE(mode.step());
    EXPECT_EQ(mode.text(0), "wal");
}

/// Batches of one event each that come while another one is being stored.
class StoreAtOnceTest : public StoreTest {
  protected:
    /// How a batch with the event "bad" fails: the statement alone, or its whole transaction.
    void open(const std::string& failure) {
        store_ = std::make_unique<Store>(file_, [this] { return waitInTheMiddle(); });
        store_->registerClass("App", dataClass());
        class_ = store_->latestClass("App", "Evt").value();
        Database(file_, Database::Access::kReadWrite)
            .execute(
                "CREATE TRIGGER failing BEFORE INSERT ON event WHEN NEW.content = 'bad' "
                "BEGIN SELECT RAISE(" +
                failure + ", 'no space'); END");
    }

    /// @return whether some of them shared a transaction.
    bool storeAtOnce(const std::vector<std::string>& contents) {
        timesAsked_ = 0;
        mayGoOn_ = false;
        std::vector<std::jthread> threads;
        threads.emplace_back([this] { EXPECT_TRUE(isStored("first")); });
        timesAsked_.wait(0);
        std::atomic<std::size_t> coming = 0;
        for (const std::string& content : contents) {
            threads.emplace_back([this, &content, &coming] {
                ++coming;
                EXPECT_EQ(isStored(content), content != "bad") << content;
            });
        }
        while (coming < contents.size()) {
            std::this_thread::yield();
        }
        mayGoOn_ = true;
        mayGoOn_.notify_all();
        threads.clear();
        // Those that shared one with the bad batch were tried again, each alone.
        return timesAsked_ > contents.size() + 1;
    }

  private:
    /// Whoever asks for the time is in the middle of storing a batch.
    std::chrono::milliseconds waitInTheMiddle() {
        if (store_ && ++timesAsked_ == 1) {
            timesAsked_.notify_all();
            mayGoOn_.wait(false);
        }
        return now_;
    }

    /// Whether a batch is there as soon as the store says so, and is not when it says otherwise.
    bool isStored(const std::string& content) {
        const std::size_t before = countOf(content);
        try {
            store_->addBatch(session_, 0, {good(class_, "with " + content), good(class_, content)});
        } catch (const SqlError&) {
            EXPECT_EQ(countOf(content), before);
            EXPECT_EQ(countOf("with " + content), before);
            return false;
        }
        EXPECT_EQ(countOf(content), before + 1);
        EXPECT_EQ(countOf("with " + content), before + 1);
        return true;
    }

    std::size_t countOf(const std::string& content) {
        const std::vector<std::string> all = contents();
        return static_cast<std::size_t>(std::count(all.begin(), all.end(), content));
    }

    std::unique_ptr<Store> store_;
    StoredClass class_;
    std::atomic<std::size_t> timesAsked_ = 0;
    std::atomic<bool> mayGoOn_ = true;
};

TEST_F(StoreAtOnceTest, BatchesAreThereWhenItIsSaidHoweverTheyAreStored) {
    open("FAIL");
    for (int round = 0; round < 20; ++round) {
        storeAtOnce({"a", "b", "c"});
    }
    EXPECT_EQ(contents().size(), 160U);
}

TEST_F(StoreAtOnceTest, FailingBatchLeavesThoseStoredWhoseTransactionItShared) {
    open("FAIL");
    while (!storeAtOnce({"a", "bad", "c"})) {
    }
}

TEST_F(StoreAtOnceTest, FailureOfAWholeTransactionIsThatOfTheBatchThatCausedIt) {
    open("ROLLBACK");
    while (!storeAtOnce({"bad", "b", "c"})) {
    }
}

TEST_F(StoreTest, ReadsWhileABatchIsBeingStored) {
    std::function<void()> inTheMiddle = [] {};
    Store store(file_, [this, &inTheMiddle] {
        inTheMiddle();
        return now_;
    });
    store.registerClass("App", dataClass());
    const StoredClass known = store.latestClass("App", "Evt").value();
    bool found = false;
    inTheMiddle = [&store, &found] {
        found = store.latestClass("App", "Evt").has_value() && !store.consent();
    };
    store.addBatch(session_, 0, {good(known, "{}")});
    EXPECT_TRUE(found);
}

TEST_F(StoreTest, ReadersSeeWhatIsStoredWhileItIsOpen) {
    const auto store = open();
    store->registerClass("App", dataClass());
    StoreReader reader(file_);
    EXPECT_EQ(reader.countEvents({}), 0);
    store->addBatch(session_, 0, {good(store->latestClass("App", "Evt").value(), "{}")});
    EXPECT_EQ(reader.countEvents({}), 1);
}

}  // namespace
}  // namespace Orvel::Service
