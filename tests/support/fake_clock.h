#ifndef ORVEL_SUPPORT_FAKE_CLOCK_H
#define ORVEL_SUPPORT_FAKE_CLOCK_H

#include <cstdint>

namespace Orvel::TestSupport {

/// A moment in September 2026.
inline constexpr std::int64_t kSomeTime = 1'790'000'000;

/// What the library's clock says, in seconds since 1970-01-01 00:00 UTC, until it is set anew.
void setCurrentTime(std::int64_t seconds);

}  // namespace Orvel::TestSupport

#endif
