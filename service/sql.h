#ifndef ORVEL_SERVICE_SQL_H
#define ORVEL_SERVICE_SQL_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

/// @file
/// SQLite with owners: connections, statements, transactions. Texts are UTF-8 and keep U+0000.

namespace Orvel::Service {

/// The database could not do what it was asked to.
class SqlError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// What the database's file holds is not, or no longer, a sound database.
class DamagedDatabase : public SqlError {
  public:
    using SqlError::SqlError;
};

/// One connection; used by one thread at a time. Any operation finds damage where it comes across
/// it, and then throws a DamagedDatabase.
class Database {
  public:
    enum class Access { kReadOnly, kReadWrite };

    /// @throws SqlError
    Database(const std::filesystem::path& file, Access access);

    /// Runs statements that have no parameters. @throws SqlError
    void execute(const std::string& statements);

    /// Whether closing the connection, when it is the last one, moves what the log of a WAL
    /// database holds into its main file. At first it does.
    void tidyUpOnClose(bool tidies);

    /// How many rows the last statement has inserted, changed or removed.
    std::int64_t changes() const;

    sqlite3* handle() const { return handle_.get(); }

  private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Close> handle_;
};

/// A prepared statement: bind, then `step` until it says that there are no more rows, then `reset`.
/// Bound texts are borrowed until then.
class Statement {
  public:
    /// @throws SqlError
    Statement(const Database& database, std::string_view text);

    Statement& bind(int parameter, std::int64_t value);
    Statement& bind(int parameter, std::string_view text);
    /// Binds a text, or NULL.
    Statement& bindOptional(int parameter, std::optional<std::string_view> text);

    /// @return whether there is a row to look at. @throws SqlError
    bool step();
    /// Makes the statement ready to be bound and run again.
    void reset();
    /// Runs a statement that gives no rows, and resets it. @throws SqlError
    void run();

    std::int64_t integer(int column) const;
    /// Valid until the next `step` or `reset`; a NULL is an empty text.
    std::string_view text(int column) const;
    bool isNull(int column) const;

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* handle) const;
    };
    void check(int code) const;

    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

/// Resets a statement at the end of a block, however that ends.
class StatementUse {
  public:
    explicit StatementUse(Statement& statement) : statement_(statement) {}
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    ~StatementUse() { statement_.reset(); }

  private:
    Statement& statement_;
};

/// A transaction; what it writes is undone at the end of its block unless it was committed.
class Transaction {
  public:
    /// @param access with `kReadOnly` it writes nothing, and sees one moment of the data.
    /// @throws SqlError
    explicit Transaction(Database& database,
                         Database::Access access = Database::Access::kReadWrite);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    /// Returns when the changes are durable. @throws SqlError
    void commit();

  private:
    void undo();

    Database& database_;
};

}  // namespace Orvel::Service

#endif
