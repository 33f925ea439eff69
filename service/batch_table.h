#ifndef ORVEL_SERVICE_BATCH_TABLE_H
#define ORVEL_SERVICE_BATCH_TABLE_H

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

#include "service/sql.h"
#include "service/store.h"
#include "service/time_ordered_ids.h"

namespace Orvel::Service {

/// When, by whom and by which application a batch was sent.
struct Receipt {
    std::chrono::milliseconds time;
    std::uint32_t peerUser = 0;
    /// The application's row.
    std::int64_t application = 0;
};

/// Writes batches with their events.
///
/// Used by one thread at a time.
class BatchTable {
  public:
    /// @param database must outlive it. @throws SqlError
    explicit BatchTable(const Database& database);

    /// Adds a batch with all its events, each with the next identifier. The caller's transaction
    /// must be undone when this fails. @throws SqlError
    void add(const Receipt& receipt, const Session& session, const std::vector<JudgedEvent>& events,
             TimeOrderedIds& ids);

  private:
    struct Row {
        std::int64_t id;
        const JudgedEvent* event;
    };

    void addGood(std::int64_t batch, std::span<const Row> rows);
    static void insertGood(Statement& statement, std::int64_t batch, std::span<const Row> rows);
    void insertRefused(std::int64_t batch, const Row& row);

    Statement addBatch_;
    Statement addEvent_;
    Statement addEvents_;
    Statement addRefused_;
};

}  // namespace Orvel::Service

#endif
