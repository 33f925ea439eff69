#ifndef ORVEL_SERVICE_SCHEMA_H
#define ORVEL_SERVICE_SCHEMA_H

#include "service/sql.h"

namespace Orvel::Service {

/// Makes the tables in a new database, adds those that data of an older version lacks, and refuses
/// a database that this version cannot read. The whole of an old database is read for that; nothing
/// is written to one that lacks nothing.
/// @throws SqlError when the database was made by a newer version, or by another program;
///     DamagedDatabase when it is not sound. Nothing of it was changed then.
void prepareSchema(Database& database);

/// Refuses a database that this version cannot read, one without tables included. Data of an older
/// version passes.
/// @throws SqlError
void checkSchema(const Database& database);

/// Whether the database has tables for the user's consent, which data of an older version lacks.
/// @throws SqlError
bool holdsConsent(const Database& database);

/// Whether the database has tables for what is counted, which data of an older version lacks.
/// @throws SqlError
bool holdsCounts(const Database& database);

}  // namespace Orvel::Service

#endif
