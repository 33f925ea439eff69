#include <stdlib.h>
#include <time.h>

#include <atomic>
#include <limits>

#include "text/local_time.h"

namespace Orvel::Analytics::Text {
namespace {

// Whether TZ was set when the time zone was read last.
std::atomic<bool> wasNamed{true};

}  // namespace

void readTimeZone() {
    wasNamed = getenv("TZ") != nullptr;
    tzset();
}

std::optional<std::tm> toLocalTime(std::int64_t time) {
    if (time < std::numeric_limits<std::time_t>::min() ||
        time > std::numeric_limits<std::time_t>::max()) {
        return std::nullopt;
    }
    // localtime_r, unlike localtime, need not look at TZ by itself (POSIX). While TZ is not set,
    // the C library would look for the system's zone in the file system, which is too much for
    // every event.
    if (wasNamed || getenv("TZ") != nullptr) {
        readTimeZone();
    }
    const auto seconds = static_cast<std::time_t>(time);
    std::tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        return std::nullopt;
    }
    return local;
}

}  // namespace Orvel::Analytics::Text
