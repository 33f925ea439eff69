#ifndef ORVEL_SERVICE_CONSENT_TABLE_H
#define ORVEL_SERVICE_CONSENT_TABLE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "service/consent_record.h"
#include "service/sql.h"

/// @file
/// Reading the changes of the user's consent. The database must have a table for them.

namespace Orvel::Service {

/// One change of the consent. The texts are borrowed.
struct ConsentChange {
    std::int64_t received = 0;
    std::int64_t peerUser = 0;
    std::string_view application;
    std::string_view source;
    Permissions before;
    Permissions after;
};

/// The consent as it was last set; nothing when it never was. @throws SqlError
std::optional<GivenConsent> lastConsent(const Database& database);

/// Visits the changes, the oldest first. @throws SqlError
void visitConsentChanges(const Database& database,
                         const std::function<void(const ConsentChange&)>& visit);

}  // namespace Orvel::Service

#endif
