#ifndef ORVEL_SERVICE_DAILY_COUNT_H
#define ORVEL_SERVICE_DAILY_COUNT_H

#include <cstdint>
#include <string_view>

#include "service/sql.h"

namespace Orvel::Service {

/// How many events were stored for an application on one day. Days are counted as `utcDay` does;
/// an application's count begins anew on any other day than the one of its last events.
///
/// Used by one thread at a time.
class DailyCount {
  public:
    /// @param database must outlive it. @throws SqlError
    explicit DailyCount(const Database& database);

    /// 0 for an application that is not known. @throws SqlError
    std::int64_t of(std::string_view application, std::int64_t day);

    /// @param application its row. @throws SqlError
    void add(std::int64_t application, std::int64_t day, std::int64_t events);

  private:
    Statement find_;
    Statement add_;
};

}  // namespace Orvel::Service

#endif
