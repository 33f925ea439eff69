#ifndef ORVEL_SERVICE_STORED_BYTES_H
#define ORVEL_SERVICE_STORED_BYTES_H

#include <cstdint>

#include "service/sql.h"

namespace Orvel::Service {

/// Counts the bytes of a database's pages that hold something. Pages that have become free stay in
/// the file and are used again.
///
/// Used by one thread at a time.
class StoredBytes {
  public:
    /// @param database must outlive it. @throws SqlError
    explicit StoredBytes(const Database& database);

    /// In a transaction that writes, as that leaves them. @throws SqlError
    std::int64_t count();

  private:
    Statement pages_;
    Statement freePages_;
    std::int64_t pageSize_;
};

}  // namespace Orvel::Service

#endif
