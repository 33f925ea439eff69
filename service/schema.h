#ifndef ORVEL_SERVICE_SCHEMA_H
#define ORVEL_SERVICE_SCHEMA_H

#include "service/sql.h"

namespace Orvel::Service {

/// Makes the tables in a new database, and refuses one that this version cannot read.
/// @throws SqlError when the database was made by a newer version, or by another program.
void prepareSchema(Database& database);

/// Refuses a database that this version cannot read, one without tables included.
/// @throws SqlError
void checkSchema(Database& database);

}  // namespace Orvel::Service

#endif
