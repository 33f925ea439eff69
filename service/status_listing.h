#ifndef ORVEL_SERVICE_STATUS_LISTING_H
#define ORVEL_SERVICE_STATUS_LISTING_H

#include <chrono>

#include "service/listing.h"
#include "service/settings.h"

namespace Orvel::Service {

/// Shows how much is stored beside the limits that these settings give, what was removed because of
/// them, and how many events each application has reported on the day of `now`. @throws SqlError
void showStatus(StoreReader& reader, const Limits& limits, std::chrono::milliseconds now,
                ListingForm form, const Output& output);

}  // namespace Orvel::Service

#endif
