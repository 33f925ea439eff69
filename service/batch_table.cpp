#include "service/batch_table.h"

#include <string>

namespace Orvel::Service {

namespace {

/// Running a statement costs half as much as the row that it inserts.
constexpr std::size_t kRowsAtOnce = 16;

std::string insertionOfEvents(std::size_t rows) {
    std::string text = "INSERT INTO event VALUES(?, ?, ?, ?, ?, ?)";
    for (std::size_t row = 1; row < rows; ++row) {
        text += ", (?, ?, ?, ?, ?, ?)";
    }
    return text;
}

}  // namespace

BatchTable::BatchTable(const Database& database)
    : addBatch_(database, R"sql(
          INSERT INTO batch VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12))sql"),
      addEvent_(database, insertionOfEvents(1)),
      addEvents_(database, insertionOfEvents(kRowsAtOnce)),
      addRefused_(database, "INSERT INTO refused_event VALUES(?1, ?2, ?3, ?4, ?5, ?6)") {}

void BatchTable::add(const Receipt& receipt, const Session& session,
                     const std::vector<JudgedEvent>& events, TimeOrderedIds& ids) {
    const std::int64_t batch = ids.next(receipt.time);
    addBatch_.bind(1, batch)
        .bind(2, receipt.application)
        .bind(3, receipt.time.count())
        .bind(4, receipt.peerUser)
        .bind(5, session.versionTag)
        .bind(6, session.started)
        .bind(7, session.applicationVersion)
        .bind(8, session.id)
        .bind(9, session.counter)
        .bind(10, session.user)
        .bind(11, session.device)
        .bind(12, session.environment)
        .run();
    std::vector<Row> good;
    good.reserve(events.size());
    for (const JudgedEvent& event : events) {
        const Row row{ids.next(receipt.time), &event};
        if (event.error.empty()) {
            good.push_back(row);
        } else {
            insertRefused(batch, row);
        }
    }
    addGood(batch, good);
}

void BatchTable::addGood(std::int64_t batch, std::span<const Row> rows) {
    while (rows.size() >= kRowsAtOnce) {
        insertGood(addEvents_, batch, rows.first(kRowsAtOnce));
        rows = rows.subspan(kRowsAtOnce);
    }
    for (; !rows.empty(); rows = rows.subspan(1)) {
        insertGood(addEvent_, batch, rows.first(1));
    }
}

void BatchTable::insertGood(Statement& statement, std::int64_t batch, std::span<const Row> rows) {
    int bound = 0;
    for (const Row& row : rows) {
        statement.bind(bound + 1, row.id)
            .bind(bound + 2, batch)
            .bind(bound + 3, row.event->dataClass)
            .bindOptional(bound + 4, row.event->version)
            .bind(bound + 5, row.event->time)
            .bind(bound + 6, row.event->content);
        bound += 6;
    }
    statement.run();
}

void BatchTable::insertRefused(std::int64_t batch, const Row& row) {
    addRefused_.bind(1, row.id)
        .bind(2, batch)
        .bindOptional(3, row.event->className)
        .bind(4, row.event->error)
        .bind(5, row.event->path)
        .bind(6, row.event->content)
        .run();
}

}  // namespace Orvel::Service
