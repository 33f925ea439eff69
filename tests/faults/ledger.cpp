#include "faults/ledger.h"

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <unordered_map>

namespace Orvel::Faults {

namespace {

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close_v2)>;
using Query = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

constexpr int kPatience = 60'000;

[[noreturn]] void fail(sqlite3* connection) {
    throw std::runtime_error(std::string("cannot read the database: ") +
                             sqlite3_errmsg(connection));
}

Connection open(const std::filesystem::path& database) {
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(database.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr);
    Connection connection(handle, &sqlite3_close_v2);
    if (code != SQLITE_OK) {
        fail(handle);
    }
    sqlite3_busy_timeout(handle, kPatience);
    return connection;
}

Query prepare(const Connection& connection, const char* text) {
    sqlite3_stmt* handle = nullptr;
    if (sqlite3_prepare_v2(connection.get(), text, -1, &handle, nullptr) != SQLITE_OK) {
        fail(connection.get());
    }
    return {handle, &sqlite3_finalize};
}

bool step(const Connection& connection, const Query& query) {
    const int code = sqlite3_step(query.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        fail(connection.get());
    }
    return code == SQLITE_ROW;
}

}  // namespace

Account& Account::operator+=(const Account& other) {
    sent += other.sent;
    acknowledged += other.acknowledged;
    refused += other.refused;
    found += other.found;
    lost += other.lost;
    duplicated += other.duplicated;
    revived += other.revived;
    torn += other.torn;
    strange += other.strange;
    unanswered += other.unanswered;
    return *this;
}

bool Account::isKept() const {
    return lost == 0 && duplicated == 0 && revived == 0 && torn == 0 && strange == 0;
}

std::string Account::text() const {
    const auto item = [](const char* name, std::uint64_t count) {
        return std::string(name) + ' ' + std::to_string(count);
    };
    return item("sent", sent) + ", " + item("acknowledged", acknowledged) + ", " +
           item("refused", refused) + ", " + item("found", found) + ", " + item("lost", lost) +
           ", " + item("duplicated", duplicated) + ", " + item("found although refused", revived) +
           ", " + item("found in part", torn) + ", " + item("never sent", strange) + ", " +
           item("found without an answer", unanswered);
}

std::int32_t Ledger::takeNumbers(std::int32_t count) {
    const std::scoped_lock lock(mutex_);
    const std::int32_t first = next_;
    next_ += count;
    return first;
}

void Ledger::record(const SentBatch& batch) {
    const std::scoped_lock lock(mutex_);
    batches_.push_back(batch);
    if (batch.told == Told::kAcknowledged) {
        acknowledged_ += static_cast<std::uint64_t>(batch.count);
    }
}

std::uint64_t Ledger::acknowledged() const {
    const std::scoped_lock lock(mutex_);
    return acknowledged_;
}

Account Ledger::account(const std::vector<std::int32_t>& stored) const {
    std::unordered_map<std::int32_t, std::uint64_t> times;
    for (const std::int32_t number : stored) {
        ++times[number];
    }
    Account account;
    account.found = stored.size();
    const std::scoped_lock lock(mutex_);
    for (const SentBatch& batch : batches_) {
        const auto count = static_cast<std::uint64_t>(batch.count);
        std::uint64_t there = 0;
        for (std::int32_t number = batch.first; number < batch.first + batch.count; ++number) {
            const auto found = times.find(number);
            if (found != times.end()) {
                ++there;
                account.duplicated += found->second - 1;
                times.erase(found);
            }
        }
        account.sent += count;
        account.torn += there == count ? 0 : there;
        if (batch.told == Told::kAcknowledged) {
            account.acknowledged += count;
            account.lost += count - there;
        } else if (batch.told == Told::kRefused) {
            account.refused += count;
            account.revived += there;
        } else {
            account.unanswered += there;
        }
    }
    for (const auto& [number, count] : times) {
        account.strange += count;
    }
    return account;
}

std::vector<std::int32_t> storedNumbers(const std::filesystem::path& database) {
    const Connection connection = open(database);
    const Query query = prepare(connection, "SELECT json_extract(content, '$.number') FROM event");
    std::vector<std::int32_t> numbers;
    while (step(connection, query)) {
        numbers.push_back(sqlite3_column_int(query.get(), 0));
    }
    return numbers;
}

std::string integrityOf(const std::filesystem::path& database) {
    const Connection connection = open(database);
    const Query query = prepare(connection, "PRAGMA integrity_check");
    std::string all;
    while (step(connection, query)) {
        all += all.empty() ? "" : "\n";
        all += reinterpret_cast<const char*>(sqlite3_column_text(query.get(), 0));
    }
    return all;
}

}  // namespace Orvel::Faults
