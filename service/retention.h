#ifndef ORVEL_SERVICE_RETENTION_H
#define ORVEL_SERVICE_RETENTION_H

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "service/settings.h"
#include "service/sql.h"
#include "service/stored_bytes.h"

namespace Orvel::Service {

/// Keeps what is stored within its limits: the oldest batches go first, whole, and are counted.
///
/// Used by one thread at a time, in a transaction that writes.
class Retention {
  public:
    static constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

    /// @param database must outlive it. @throws SqlError
    Retention(const Database& database, const Limits& limits);

    /// Removes batches that are too old, and the oldest ones as long as there is too little room.
    /// A batch from the future, which a clock that went wrong has left, is not old.
    /// @param last batches with greater identifiers stay in any case.
    /// @param most at most so many batches go.
    /// @return whether everything went that has to.
    bool remove(std::chrono::milliseconds now, std::int64_t last, std::int64_t most = kAll);

    /// Whether what is stored takes no more bytes than it may.
    bool hasRoom();

  private:
    struct Batch {
        std::int64_t id;
        std::chrono::milliseconds received;
    };

    std::optional<Batch> batchAfter(std::int64_t id);
    void remove(const Batch& batch, std::string_view reason, std::chrono::milliseconds now);
    std::int64_t removeEvents(Statement& statement, const Batch& batch, std::int64_t end);
    bool isTooOld(const Batch& batch, std::chrono::milliseconds now) const;

    const Database& database_;
    std::int64_t mostBytes_;
    std::chrono::days longest_;
    StoredBytes bytes_;
    Statement findBatch_;
    Statement removeBatch_;
    Statement removeGood_;
    Statement removeRefused_;
    Statement count_;
};

}  // namespace Orvel::Service

#endif
