#include "service/store_reader.h"

#include "service/schema.h"
#include "service/stored_bytes.h"

namespace Orvel::Service {

namespace {

// The joins are crossed so that events come in the order of their identifiers without being sorted.
constexpr const char* kGoodEvents = R"sql(
    SELECT event.id AS id, received, peer_user, application.name, application_version, session,
           session_counter, session_started, version_tag, user, device, environment, identifier,
           event.version, time, NULL, NULL, content
    FROM event CROSS JOIN batch ON batch.id = batch_id
               CROSS JOIN data_class ON data_class.id = data_class_id
               CROSS JOIN application ON application.id = batch.application_id
    WHERE (?1 IS NULL OR identifier = ?1) AND (?2 IS NULL OR application.name = ?2))sql";

constexpr const char* kRefusedEvents = R"sql(
    SELECT refused_event.id AS id, received, peer_user, application.name, application_version,
           session, session_counter, session_started, version_tag, user, device, environment, class,
           NULL, NULL, error, path, content
    FROM refused_event CROSS JOIN batch ON batch.id = batch_id
                       CROSS JOIN application ON application.id = batch.application_id
    WHERE (?1 IS NULL OR class = ?1) AND (?2 IS NULL OR application.name = ?2))sql";

constexpr const char* kClasses = R"sql(
    SELECT application.name, identifier, version, data_class.name, fields, first_registered,
           last_registered,
           registration = max(registration) OVER (PARTITION BY application_id, identifier)
    FROM data_class JOIN application ON application.id = application_id
    ORDER BY application.name, identifier, registration)sql";

std::string selectionOf(EventFilter::Kind kind) {
    switch (kind) {
        case EventFilter::Kind::kGood:
            return kGoodEvents;
        case EventFilter::Kind::kRefused:
            return kRefusedEvents;
        case EventFilter::Kind::kAll:
            break;
    }
    return std::string(kGoodEvents) + " UNION ALL " + kRefusedEvents;
}

std::optional<std::string_view> optionalText(const Statement& statement, int column) {
    return statement.isNull(column) ? std::nullopt : std::optional{statement.text(column)};
}

EventRow eventRow(const Statement& row) {
    return {.id = row.integer(0),
            .received = row.integer(1),
            .peerUser = row.integer(2),
            .application = row.text(3),
            .applicationVersion = row.text(4),
            .session = row.text(5),
            .sessionCounter = row.text(6),
            .sessionStarted = row.text(7),
            .versionTag = row.text(8),
            .user = row.text(9),
            .device = row.text(10),
            .environment = row.text(11),
            .className = optionalText(row, 12),
            .version = optionalText(row, 13),
            .time = row.text(14),
            .error = row.text(15),
            .path = row.text(16),
            .content = row.text(17)};
}

std::optional<std::int64_t> optionalInteger(const Statement& statement, int column) {
    return statement.isNull(column) ? std::nullopt : std::optional{statement.integer(column)};
}

Removal removalFor(const Database& database, std::string_view reason) {
    Statement removal(database, "SELECT batches, events, last_time FROM removal WHERE reason = ?1");
    removal.bind(1, reason).step();
    return {removal.integer(0), removal.integer(1), optionalInteger(removal, 2)};
}

std::vector<ApplicationCount> countsOf(const Database& database, std::int64_t day) {
    Statement counts(database, R"sql(
        SELECT name, events FROM daily_count JOIN application ON application.id = application_id
        WHERE day = ?1 ORDER BY name)sql");
    counts.bind(1, day);
    std::vector<ApplicationCount> all;
    while (counts.step()) {
        all.push_back({std::string(counts.text(0)), counts.integer(1)});
    }
    return all;
}

void bindFilter(Statement& statement, const EventFilter& filter) {
    statement.bindOptional(1, filter.className).bindOptional(2, filter.application);
}

}  // namespace

std::string eventQuery(EventFilter::Kind kind) {
    return selectionOf(kind) + " ORDER BY id LIMIT ?3";
}

StoreReader::StoreReader(const std::filesystem::path& file)
    : database_(file, Database::Access::kReadOnly) {
    database_.execute("PRAGMA busy_timeout = 5000");
    checkSchema(database_);
}

void StoreReader::forEachEvent(const EventFilter& filter,
                               const std::function<void(const EventRow&)>& visit) {
    Statement events(database_, eventQuery(filter.kind));
    bindFilter(events, filter);
    events.bind(3, filter.limit.value_or(-1));
    while (events.step()) {
        visit(eventRow(events));
    }
}

std::int64_t StoreReader::countEvents(const EventFilter& filter) {
    Statement count(database_, "SELECT count(*) FROM (" + selectionOf(filter.kind) + ")");
    bindFilter(count, filter);
    count.step();
    return count.integer(0);
}

std::optional<GivenConsent> StoreReader::consent() {
    return holdsConsent(database_) ? lastConsent(database_) : std::nullopt;
}

void StoreReader::forEachConsentChange(const std::function<void(const ConsentChange&)>& visit) {
    if (holdsConsent(database_)) {
        visitConsentChanges(database_, visit);
    }
}

StoreStatus StoreReader::status(std::int64_t day) {
    const Transaction moment(database_, Database::Access::kReadOnly);
    StoreStatus status{.bytes = StoredBytes(database_).count()};
    Statement oldest(database_, "SELECT received FROM batch ORDER BY id LIMIT 1");
    if (oldest.step()) {
        status.oldest = oldest.integer(0);
    }
    if (holdsCounts(database_)) {
        status.forAge = removalFor(database_, "age");
        status.forRoom = removalFor(database_, "room");
        status.today = countsOf(database_, day);
    }
    return status;
}

void StoreReader::forEachClass(const std::function<void(const ClassRow&)>& visit) {
    Statement classes(database_, kClasses);
    while (classes.step()) {
        visit({.application = classes.text(0),
               .id = classes.text(1),
               .version = classes.text(2),
               .name = classes.text(3),
               .fields = classes.text(4),
               .firstRegistered = classes.integer(5),
               .lastRegistered = classes.integer(6),
               .latest = classes.integer(7) != 0});
    }
}

}  // namespace Orvel::Service
