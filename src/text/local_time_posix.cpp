#include <time.h>

#include <limits>

#include "text/local_time.h"

namespace Orvel::Analytics::Text {

std::optional<std::tm> toLocalTime(std::int64_t time) {
    if (time < std::numeric_limits<std::time_t>::min() ||
        time > std::numeric_limits<std::time_t>::max()) {
        return std::nullopt;
    }
    // localtime_r, unlike localtime, need not look at TZ by itself (POSIX).
    tzset();
    const auto seconds = static_cast<std::time_t>(time);
    std::tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        return std::nullopt;
    }
    return local;
}

}  // namespace Orvel::Analytics::Text
