#include <time.h>

#include <cstdlib>

#include "support/time_zone.h"

namespace Orvel::TestSupport {
namespace {

/// The C library looks at TZ once, when it first converts a time; from then on it must be told.
/// @param zone empty for no TZ, which leaves the zone to the system's settings.
void useZone(const char* zone) {
    ::_putenv_s("TZ", zone);
    ::_tzset();
}

}  // namespace

TimeZone::TimeZone(const char* zone) {
    if (const char* const before = std::getenv("TZ")) {
        before_ = before;
    }
    useZone(zone);
}

TimeZone::~TimeZone() { useZone(before_ ? before_->c_str() : ""); }

}  // namespace Orvel::TestSupport
