#include "service/retention.h"

namespace Orvel::Service {

namespace {

constexpr std::int64_t kBeforeAll = 0;

}  // namespace

Retention::Retention(const Database& database, const Limits& limits)
    : database_(database),
      mostBytes_(limits.storedBytes),
      longest_(limits.storedDays),
      bytes_(database),
      findBatch_(database, "SELECT id, received FROM batch WHERE id > ?1 ORDER BY id LIMIT 1"),
      removeBatch_(database, "DELETE FROM batch WHERE id = ?1"),
      removeGood_(database, "DELETE FROM event WHERE id > ?1 AND id < ?2"),
      removeRefused_(database, "DELETE FROM refused_event WHERE id > ?1 AND id < ?2"),
      count_(database, R"sql(
          UPDATE removal SET batches = batches + 1, events = events + ?2, last_time = ?3,
                             last_id = max(last_id, ?4)
          WHERE reason = ?1)sql") {}

bool Retention::hasRoom() { return mostBytes_ == 0 || bytes_.count() <= mostBytes_; }

bool Retention::isTooOld(const Batch& batch, std::chrono::milliseconds now) const {
    return longest_.count() != 0 && now - batch.received > longest_;
}

bool Retention::remove(std::chrono::milliseconds now, std::int64_t last, std::int64_t most) {
    std::int64_t before = kBeforeAll;
    for (std::int64_t removed = 0; const auto batch = batchAfter(before);) {
        if (batch->id > last) {
            break;
        }
        const bool tooOld = isTooOld(*batch, now);
        if (!tooOld && hasRoom()) {
            if (batch->received <= now) {
                break;
            }
            // It says nothing about the age of those after it.
            before = batch->id;
            continue;
        }
        if (removed++ == most) {
            return false;
        }
        remove(*batch, tooOld ? "age" : "room", now);
    }
    return true;
}

std::optional<Retention::Batch> Retention::batchAfter(std::int64_t id) {
    const StatementUse use(findBatch_);
    if (!findBatch_.bind(1, id).step()) {
        return std::nullopt;
    }
    return Batch{findBatch_.integer(0), std::chrono::milliseconds{findBatch_.integer(1)}};
}

// A batch and its events have consecutive identifiers, so that its events lie between it and the
// next batch: nothing has to be searched.
void Retention::remove(const Batch& batch, std::string_view reason, std::chrono::milliseconds now) {
    const auto next = batchAfter(batch.id);
    const std::int64_t end = next ? next->id : kAll;
    const std::int64_t events =
        removeEvents(removeGood_, batch, end) + removeEvents(removeRefused_, batch, end);
    removeBatch_.bind(1, batch.id).run();
    count_.bind(1, reason).bind(2, events).bind(3, now.count()).bind(4, batch.id + events).run();
}

std::int64_t Retention::removeEvents(Statement& statement, const Batch& batch, std::int64_t end) {
    statement.bind(1, batch.id).bind(2, end).run();
    return database_.changes();
}

}  // namespace Orvel::Service
