#ifndef ORVEL_BENCH_SERVICE_BARE_DATABASE_H
#define ORVEL_BENCH_SERVICE_BARE_DATABASE_H

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "bench/service/sample_batch.h"

namespace Orvel::Bench {

/// The service's tables and settings of the database, and nothing else of the service.
class BareDatabase {
  public:
    /// Makes the tables, with the application and its data class in them.
    /// @param rows must outlive the database.
    /// @throws std::runtime_error as every operation does when the database fails.
    BareDatabase(const std::filesystem::path& file, const SampleRows& rows);

    /// Stores the batch in a transaction of its own; durable when it returns.
    void storeBatch();

  private:
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    Statement prepare(const char* text);
    void bindWhatStays();
    void insertEvents(std::int64_t batch, std::span<const std::string> contents);
    void run(const Statement& statement);
    [[noreturn]] void fail();

    std::unique_ptr<sqlite3, Close> database_;
    const SampleRows& rows_;
    std::array<std::string, 8> sessionTexts_;
    std::int64_t nextId_;
    Statement begin_;
    Statement commit_;
    Statement addBatch_;
    Statement addEvents_;
};

/// Whether the database holds so many batches' events, each with the values that were sent.
bool holdsBatches(const std::filesystem::path& database, const SampleRows& rows,
                  std::int64_t batches);

}  // namespace Orvel::Bench

#endif
