#include <cstdlib>

#include "support/time_zone.h"

namespace Orvel::TestSupport {

// The C library is not told: whoever converts a time must.

TimeZone::TimeZone(const char* zone) {
    if (const char* const before = std::getenv("TZ")) {
        before_ = before;
    }
    setenv("TZ", zone, 1);
}

TimeZone::~TimeZone() {
    if (before_) {
        setenv("TZ", before_->c_str(), 1);
    } else {
        unsetenv("TZ");
    }
}

}  // namespace Orvel::TestSupport
