#include "bench/service/bare_database.h"

#include <stdexcept>
#include <string_view>

#include "service/store.h"

namespace Orvel::Bench {
namespace {

constexpr const char* kSettings =
    "PRAGMA foreign_keys = OFF; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL";

// The first of their tables.
constexpr std::int64_t kApplication = 1;
constexpr std::int64_t kDataClass = 1;

// A statement that inserts many rows takes a third less time than as many statements. It divides a
// batch.
constexpr std::size_t kRowsAtOnce = 50;
static_assert(kEventsOfABatch % kRowsAtOnce == 0);
constexpr int kColumns = 6;

// Identifiers of events are as long as the service's, which begin with the time.
constexpr std::int64_t kFirstId = 1'795'000'000'000 << 21;

void makeTables(const std::filesystem::path& file, const SampleRows& rows) {
    Service::Store store(file, Service::systemTime);
    store.registerClass(toUtf8(rows.session.appName), {"", "PageView", rows.version, {}});
}

std::string insertionOfEvents() {
    std::string text = "INSERT INTO event VALUES(?, ?, ?, ?, ?, ?)";
    for (std::size_t row = 1; row < kRowsAtOnce; ++row) {
        text += ", (?, ?, ?, ?, ?, ?)";
    }
    return text;
}

/// @param text must outlive the statement.
void bindText(sqlite3_stmt* statement, int parameter, std::string_view text) {
    sqlite3_bind_text64(statement, parameter, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

}  // namespace

BareDatabase::BareDatabase(const std::filesystem::path& file, const SampleRows& rows)
    : rows_(rows), nextId_(kFirstId) {
    makeTables(file, rows);
    sqlite3* database = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &database,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(database);
    if (code != SQLITE_OK ||
        sqlite3_exec(database, kSettings, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
    begin_ = prepare("BEGIN IMMEDIATE");
    commit_ = prepare("COMMIT");
    addBatch_ =
        prepare("INSERT INTO batch VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)");
    addEvents_ = prepare(insertionOfEvents().c_str());
    bindWhatStays();
}

BareDatabase::Statement BareDatabase::prepare(const char* text) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(database_.get(), text, -1, SQLITE_PREPARE_PERSISTENT, &statement,
                           nullptr) != SQLITE_OK) {
        fail();
    }
    return Statement(statement);
}

// A reset statement keeps what is bound to it.
void BareDatabase::bindWhatStays() {
    const Analytics::Session::AppSession& session = rows_.session;
    sessionTexts_ = {toUtf8(session.versionTag),
                     rows_.time,
                     toUtf8(session.appVersion),
                     toUtf8(session.sessionId),
                     "0",
                     toUtf8(session.userId),
                     toUtf8(session.deviceId),
                     toUtf8(session.environment)};
    sqlite3_bind_int64(addBatch_.get(), 2, kApplication);
    sqlite3_bind_int64(addBatch_.get(), 3, kFirstId >> 21);
    sqlite3_bind_int64(addBatch_.get(), 4, 0);
    int parameter = 5;
    for (const std::string& text : sessionTexts_) {
        bindText(addBatch_.get(), parameter++, text);
    }
    for (int row = 0; row < static_cast<int>(kRowsAtOnce); ++row) {
        sqlite3_bind_int64(addEvents_.get(), row * kColumns + 3, kDataClass);
        bindText(addEvents_.get(), row * kColumns + 4, rows_.version);
        bindText(addEvents_.get(), row * kColumns + 5, rows_.time);
    }
}

void BareDatabase::storeBatch() {
    run(begin_);
    const std::int64_t batch = nextId_++;
    sqlite3_bind_int64(addBatch_.get(), 1, batch);
    run(addBatch_);
    for (std::size_t stored = 0; stored < rows_.contents.size(); stored += kRowsAtOnce) {
        insertEvents(batch, std::span(rows_.contents).subspan(stored, kRowsAtOnce));
    }
    run(commit_);
}

void BareDatabase::insertEvents(std::int64_t batch, std::span<const std::string> contents) {
    int bound = 0;
    for (const std::string& content : contents) {
        sqlite3_bind_int64(addEvents_.get(), bound + 1, nextId_++);
        sqlite3_bind_int64(addEvents_.get(), bound + 2, batch);
        bindText(addEvents_.get(), bound + 6, content);
        bound += kColumns;
    }
    run(addEvents_);
}

void BareDatabase::run(const Statement& statement) {
    if (sqlite3_step(statement.get()) != SQLITE_DONE) {
        fail();
    }
    sqlite3_reset(statement.get());
}

void BareDatabase::fail() { throw std::runtime_error(sqlite3_errmsg(database_.get())); }

bool holdsBatches(const std::filesystem::path& file, const SampleRows& rows, std::int64_t batches) {
    const Service::Database database(file, Service::Database::Access::kReadOnly);
    Service::Statement count(database, "SELECT count(*), sum(content = ?1) FROM event");
    count.bind(1, rows.contents.front());
    const std::int64_t events = batches * static_cast<std::int64_t>(rows.contents.size());
    return count.step() && count.integer(0) == events && count.integer(1) == events;
}

}  // namespace Orvel::Bench
