#ifndef ORVEL_CHANNEL_SERVICE_ERROR_H
#define ORVEL_CHANNEL_SERVICE_ERROR_H

#include "orvel/analytics/result.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Channel {

/// The result for an error of the service: of the names that occur anywhere in the text, the first
/// in the order of the table decides. A text without a known name gives `GenericError`.
Emitters::AnalyticsResult mapServiceErrorName(WideStringView text) noexcept;

}  // namespace Orvel::Analytics::Channel

#endif
