#ifndef ORVEL_TEXT_CLOCK_H
#define ORVEL_TEXT_CLOCK_H

#include <cstdint>

namespace Orvel::Analytics::Text {

/// The system clock, in seconds since 1970-01-01 00:00 UTC.
std::int64_t currentTime();

}  // namespace Orvel::Analytics::Text

#endif
