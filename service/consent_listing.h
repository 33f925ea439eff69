#ifndef ORVEL_SERVICE_CONSENT_LISTING_H
#define ORVEL_SERVICE_CONSENT_LISTING_H

#include "service/listing.h"
#include "service/settings.h"

namespace Orvel::Service {

/// Shows the consent record with which a service with these settings answers. @throws SqlError
void showConsent(StoreReader& reader, const Settings& settings, ListingForm form,
                 const Output& output);

/// Lists the changes of the consent, the oldest first. @throws SqlError
void listConsentChanges(StoreReader& reader, ListingForm form, const Output& output);

}  // namespace Orvel::Service

#endif
