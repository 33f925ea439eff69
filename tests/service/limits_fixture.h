#ifndef ORVEL_SERVICE_TESTS_LIMITS_FIXTURE_H
#define ORVEL_SERVICE_TESTS_LIMITS_FIXTURE_H

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "service/store.h"
#include "service/store_reader.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {

using std::chrono::days;
using std::chrono::milliseconds;

/// Little room, of which the tables themselves take about a fifth.
inline constexpr std::int64_t kSmall = 256 << 10;

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

}  // namespace Orvel::Service

#endif
