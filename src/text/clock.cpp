#include "text/clock.h"

#include <chrono>

namespace Orvel::Analytics::Text {

std::int64_t currentTime() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(now).count();
}

}  // namespace Orvel::Analytics::Text
