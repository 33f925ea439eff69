#include "service/schema.h"

#include <array>

namespace Orvel::Service {

namespace {

/// Says in the file's header whose database it is.
constexpr std::int64_t kApplicationId = 0x4F72766C;

constexpr const char* kEventTables = R"sql(
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

constexpr const char* kConsentTable = R"sql(
-- The greatest one holds the consent of now; the one before it says what was changed.
CREATE TABLE consent_change(
    id INTEGER PRIMARY KEY,             -- of the same sequence as batches and events
    application_id INTEGER NOT NULL REFERENCES application(id),
    received INTEGER NOT NULL,
    peer_user INTEGER NOT NULL,
    source TEXT NOT NULL,
    marketing TEXT NOT NULL CHECK(marketing IN ('Accepted', 'Rejected', 'Unknown')),
    support TEXT NOT NULL CHECK(support IN ('Accepted', 'Rejected', 'Unknown')),
    product_enhancement TEXT NOT NULL
        CHECK(product_enhancement IN ('Accepted', 'Rejected', 'Unknown'))
) STRICT;
)sql";

constexpr const char* kLimitTables = R"sql(
-- How many events were stored for an application on the last day, by UTC, on which any were.
CREATE TABLE daily_count(
    application_id INTEGER PRIMARY KEY REFERENCES application(id),
    day INTEGER NOT NULL,               -- days since 1970-01-01
    events INTEGER NOT NULL
) STRICT;

-- What has been removed because it was too old, or to make room.
CREATE TABLE removal(
    reason TEXT PRIMARY KEY CHECK(reason IN ('age', 'room')),
    batches INTEGER NOT NULL,
    events INTEGER NOT NULL,
    last_time INTEGER,                  -- NULL when there was none yet
    last_id INTEGER NOT NULL            -- the greatest identifier that went
) STRICT;
INSERT INTO removal VALUES('age', 0, 0, NULL, 0), ('room', 0, 0, NULL, 0);
)sql";

/// Data of version N has gone through the first N steps.
constexpr std::array kSteps = {kEventTables, kConsentTable, kLimitTables};
constexpr std::int64_t kVersion = kSteps.size();
constexpr std::int64_t kVersionWithConsent = 2;
constexpr std::int64_t kVersionWithLimits = 3;

std::int64_t singleInteger(const Database& database, const char* query) {
    Statement statement(database, query);
    return statement.step() ? statement.integer(0) : 0;
}

std::int64_t versionOf(const Database& database) {
    return singleInteger(database, "PRAGMA user_version");
}

/// Refuses data that this program cannot read.
void checkVersion(const Database& database, std::int64_t version) {
    if (singleInteger(database, "PRAGMA application_id") != kApplicationId || version < 1) {
        throw SqlError("the file is not a database of this program");
    }
    if (version > kVersion) {
        throw SqlError("the data was written by a newer version of this program (schema version " +
                       std::to_string(version) + ", this program knows " +
                       std::to_string(kVersion) + ")");
    }
}

/// Indexes are not compared with their tables, which would take several times as long.
void checkSoundness(const Database& database) {
    Statement check(database, "PRAGMA quick_check(1)");
    if (check.step() && check.text(0) != "ok") {
        throw DamagedDatabase("the database is damaged: " + std::string(check.text(0)));
    }
}

}  // namespace

void prepareSchema(Database& database) {
    const std::int64_t version = versionOf(database);
    const bool isNew =
        version == 0 && singleInteger(database, "SELECT count(*) FROM sqlite_schema") == 0;
    if (!isNew) {
        checkVersion(database, version);
        checkSoundness(database);
    }
    if (version == kVersion) {
        return;
    }
    Transaction transaction(database);
    if (isNew) {
        database.execute("PRAGMA application_id = " + std::to_string(kApplicationId));
    }
    for (auto step = static_cast<std::size_t>(version); step < kSteps.size(); ++step) {
        database.execute(kSteps[step]);
    }
    database.execute("PRAGMA user_version = " + std::to_string(kVersion));
    transaction.commit();
}

void checkSchema(const Database& database) { checkVersion(database, versionOf(database)); }

bool holdsConsent(const Database& database) { return versionOf(database) >= kVersionWithConsent; }

bool holdsCounts(const Database& database) { return versionOf(database) >= kVersionWithLimits; }

}  // namespace Orvel::Service
