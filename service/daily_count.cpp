#include "service/daily_count.h"

namespace Orvel::Service {

DailyCount::DailyCount(const Database& database)
    : find_(database, R"sql(
          SELECT events FROM daily_count JOIN application ON application.id = application_id
          WHERE name = ?1 AND day = ?2)sql"),
      add_(database, R"sql(
          INSERT INTO daily_count VALUES(?1, ?2, ?3)
          ON CONFLICT(application_id) DO UPDATE SET
              events = iif(day = excluded.day, events, 0) + excluded.events,
              day = excluded.day)sql") {}

std::int64_t DailyCount::of(std::string_view application, std::int64_t day) {
    const StatementUse use(find_);
    return find_.bind(1, application).bind(2, day).step() ? find_.integer(0) : 0;
}

void DailyCount::add(std::int64_t application, std::int64_t day, std::int64_t events) {
    add_.bind(1, application).bind(2, day).bind(3, events).run();
}

}  // namespace Orvel::Service
