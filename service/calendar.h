#ifndef ORVEL_SERVICE_CALENDAR_H
#define ORVEL_SERVICE_CALENDAR_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace Orvel::Service {

/// Where the service takes the time from: milliseconds since 1970-01-01 00:00 UTC.
using Clock = std::function<std::chrono::milliseconds()>;

/// The machine's clock.
std::chrono::milliseconds systemTime();

/// Whether a text is a time of the form %Y%m%dT%H%M%S that a calendar and a clock can show; as in
/// that form, a minute may have a second 60.
bool isCompactTimestamp(std::string_view text);

/// How many days, by UTC, lie between 1970-01-01 and that time.
std::int64_t utcDay(std::chrono::milliseconds time);

/// Such as 2026-11-20T23:24:21.123Z.
std::string utcText(std::chrono::milliseconds time);
/// The same of a time as it is stored.
std::string utcText(std::int64_t milliseconds);

}  // namespace Orvel::Service

#endif
