#include <time.h>

#include "text/local_time.h"

namespace Orvel::Analytics::Text {

// The C runtime reads it by itself, once.
void readTimeZone() {}

std::optional<std::tm> toLocalTime(std::int64_t time) {
    const __time64_t seconds = time;
    std::tm local{};
    // Times before 1970 or after the year 3000 are refused (platform documentation). What is left
    // in `local` then must reach no formatter, which would end the process.
    if (::_localtime64_s(&local, &seconds) != 0) {
        return std::nullopt;
    }
    return local;
}

}  // namespace Orvel::Analytics::Text
