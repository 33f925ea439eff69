#include "service/schema.h"

namespace Orvel::Service {

namespace {

constexpr std::int64_t kVersion = 1;
/// Says in the file's header whose database it is.
constexpr std::int64_t kApplicationId = 0x4F72766C;

constexpr const char* kTables = R"sql(
-- Identifiers of batches, events and registrations are one growing sequence, ordered by time.
-- Times are milliseconds since 1970-01-01 00:00 UTC.
CREATE TABLE application(
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE
) STRICT;

CREATE TABLE data_class(
    id INTEGER PRIMARY KEY,
    application_id INTEGER NOT NULL REFERENCES application(id),
    identifier TEXT NOT NULL,
    version TEXT NOT NULL,
    name TEXT NOT NULL,
    fields TEXT NOT NULL,               -- JSON: [{"id","name","nullable","type"}, ...]
    first_registered INTEGER NOT NULL,
    last_registered INTEGER NOT NULL,
    registration INTEGER NOT NULL,      -- the greatest one of an identifier is its latest
    UNIQUE(application_id, identifier, version)
) STRICT;
CREATE UNIQUE INDEX data_class_latest ON data_class(application_id, identifier, registration);

CREATE TABLE batch(
    id INTEGER PRIMARY KEY,
    application_id INTEGER NOT NULL REFERENCES application(id),
    received INTEGER NOT NULL,
    peer_user INTEGER NOT NULL,
    version_tag TEXT NOT NULL,
    session_started TEXT NOT NULL,
    application_version TEXT NOT NULL,
    session TEXT NOT NULL,
    session_counter TEXT NOT NULL,      -- the digits as they were written
    user TEXT NOT NULL,
    device TEXT NOT NULL,
    environment TEXT NOT NULL
) STRICT;

CREATE TABLE event(
    id INTEGER PRIMARY KEY,
    batch_id INTEGER NOT NULL REFERENCES batch(id),
    data_class_id INTEGER NOT NULL REFERENCES data_class(id),
    version TEXT,
    time TEXT NOT NULL,
    content TEXT NOT NULL               -- the event's values, character for character
) STRICT;

CREATE TABLE refused_event(
    id INTEGER PRIMARY KEY,
    batch_id INTEGER NOT NULL REFERENCES batch(id),
    class TEXT,                         -- NULL when the event names no single class
    error TEXT NOT NULL,
    path TEXT NOT NULL,
    content TEXT NOT NULL               -- the event, character for character
) STRICT;
)sql";

std::int64_t singleInteger(const Database& database, const char* query) {
    Statement statement(database, query);
    return statement.step() ? statement.integer(0) : 0;
}

void refuseNewerVersion(std::int64_t version) {
    if (version > kVersion) {
        throw SqlError("the data was written by a newer version of this program (schema version " +
                       std::to_string(version) + ", this program knows " +
                       std::to_string(kVersion) + ")");
    }
}

void refuseForeignDatabase(const Database& database) {
    if (singleInteger(database, "PRAGMA application_id") != kApplicationId) {
        throw SqlError("the file is not a database of this program");
    }
}

}  // namespace

void prepareSchema(Database& database) {
    Transaction transaction(database);
    const std::int64_t version = singleInteger(database, "PRAGMA user_version");
    if (version == 0 && singleInteger(database, "SELECT count(*) FROM sqlite_schema") == 0) {
        database.execute(kTables);
        database.execute("PRAGMA application_id = " + std::to_string(kApplicationId));
        database.execute("PRAGMA user_version = " + std::to_string(kVersion));
    } else {
        refuseForeignDatabase(database);
        refuseNewerVersion(version);
    }
    transaction.commit();
}

void checkSchema(Database& database) {
    refuseForeignDatabase(database);
    refuseNewerVersion(singleInteger(database, "PRAGMA user_version"));
}

}  // namespace Orvel::Service
