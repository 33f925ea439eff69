#include "service/stored_bytes.h"

namespace Orvel::Service {

namespace {

std::int64_t numberOf(Statement& statement) {
    const StatementUse use(statement);
    statement.step();
    return statement.integer(0);
}

std::int64_t pageSizeOf(const Database& database) {
    Statement size(database, "PRAGMA page_size");
    return numberOf(size);
}

}  // namespace

StoredBytes::StoredBytes(const Database& database)
    : pages_(database, "PRAGMA page_count"),
      freePages_(database, "PRAGMA freelist_count"),
      pageSize_(pageSizeOf(database)) {}

std::int64_t StoredBytes::count() { return (numberOf(pages_) - numberOf(freePages_)) * pageSize_; }

}  // namespace Orvel::Service
