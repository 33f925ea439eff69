#ifndef ORVEL_TEXT_LOCAL_TIME_H
#define ORVEL_TEXT_LOCAL_TIME_H

#include <cstdint>
#include <ctime>
#include <optional>

namespace Orvel::Analytics::Text {

/// Reads the time zone anew. Converting a time always heeds a changed TZ; the system's own zone,
/// which counts while TZ is not set, may have been read before. A C library that has no memory to
/// read a zone says nothing, and takes UTC in its place until TZ changes.
void readTimeZone();

/// A time in seconds since 1970-01-01 00:00 UTC as the calendar time of the process's time zone, or
/// nothing when the platform cannot convert it.
std::optional<std::tm> toLocalTime(std::int64_t time);

}  // namespace Orvel::Analytics::Text

#endif
