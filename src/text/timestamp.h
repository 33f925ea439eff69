#ifndef ORVEL_TEXT_TIMESTAMP_H
#define ORVEL_TEXT_TIMESTAMP_H

#include <cstdint>

#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Text {

/// A time as local wall-clock text such as `20240131T235959`.
/// @param time seconds since 1970-01-01 00:00 UTC; 0 or less, or a time beyond the platform's
///     calendar, gives the empty text.
WideString formatLocalTimestamp(std::int64_t time);

}  // namespace Orvel::Analytics::Text

#endif
