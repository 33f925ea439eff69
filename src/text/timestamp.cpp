#include "text/timestamp.h"

#include <array>
#include <ctime>

#include "text/local_time.h"

namespace Orvel::Analytics::Text {

WideString formatLocalTimestamp(std::int64_t time) {
    if (time <= 0) {
        return {};
    }
    const auto local = toLocalTime(time);
    if (!local) {
        return {};
    }
    std::array<char, 30> text;
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%S", &*local);
    return {text.begin(), text.begin() + length};
}

}  // namespace Orvel::Analytics::Text
