#include "service/sql.h"

#include <sqlite3.h>

namespace Orvel::Service {

namespace {

[[noreturn]] void fail(sqlite3* handle) {
    const std::string what = std::string(sqlite3_errmsg(handle)) + " (SQLite code " +
                             std::to_string(sqlite3_extended_errcode(handle)) + ")";
    const int code = sqlite3_errcode(handle);
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) {
        throw DamagedDatabase(what);
    }
    throw SqlError(what);
}

}  // namespace

void Database::Close::operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }

Database::Database(const std::filesystem::path& file, Access access) {
    const int mode = access == Access::kReadOnly ? SQLITE_OPEN_READONLY
                                                 : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &handle, mode | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(handle);
    if (code != SQLITE_OK) {
        fail(handle);
    }
}

void Database::execute(const std::string& statements) {
    if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(handle());
    }
}

void Database::tidyUpOnClose(bool tidies) {
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, tidies ? 0 : 1, nullptr);
}

std::int64_t Database::changes() const { return sqlite3_changes(handle()); }

void Statement::Finalize::operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }

Statement::Statement(const Database& database, std::string_view text) {
    sqlite3_stmt* handle = nullptr;
    if (sqlite3_prepare_v3(database.handle(), text.data(), static_cast<int>(text.size()),
                           SQLITE_PREPARE_PERSISTENT, &handle, nullptr) != SQLITE_OK) {
        fail(database.handle());
    }
    handle_.reset(handle);
}

void Statement::check(int code) const {
    if (code != SQLITE_OK) {
        fail(sqlite3_db_handle(handle_.get()));
    }
}

Statement& Statement::bind(int parameter, std::int64_t value) {
    check(sqlite3_bind_int64(handle_.get(), parameter, value));
    return *this;
}

Statement& Statement::bind(int parameter, std::string_view text) {
    // A null pointer would bind NULL, and an empty view may hold one.
    check(sqlite3_bind_text64(handle_.get(), parameter, text.empty() ? "" : text.data(),
                              text.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bindOptional(int parameter, std::optional<std::string_view> text) {
    if (text) {
        return bind(parameter, *text);
    }
    check(sqlite3_bind_null(handle_.get(), parameter));
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(handle_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        fail(sqlite3_db_handle(handle_.get()));
    }
    return code == SQLITE_ROW;
}

void Statement::reset() {
    sqlite3_reset(handle_.get());
    sqlite3_clear_bindings(handle_.get());
}

void Statement::run() {
    const StatementUse use(*this);
    step();
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(handle_.get(), column);
}

std::string_view Statement::text(int column) const {
    const unsigned char* characters = sqlite3_column_text(handle_.get(), column);
    const int size = sqlite3_column_bytes(handle_.get(), column);
    if (characters == nullptr) {
        return {};
    }
    return {reinterpret_cast<const char*>(characters), static_cast<std::size_t>(size)};
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
}

Transaction::Transaction(Database& database, Database::Access access) : database_(database) {
    // What an earlier transaction could not undo, for want of memory.
    undo();
    database_.execute(access == Database::Access::kReadOnly ? "BEGIN" : "BEGIN IMMEDIATE");
}

Transaction::~Transaction() { undo(); }

void Transaction::undo() {
    // After a commit there is nothing to undo; some failures have undone everything already.
    if (sqlite3_get_autocommit(database_.handle()) == 0) {
        sqlite3_exec(database_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit() { database_.execute("COMMIT"); }

}  // namespace Orvel::Service
