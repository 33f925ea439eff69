#include "service/time_ordered_ids.h"

#include <algorithm>

namespace Orvel::Service {

std::int64_t TimeOrderedIds::next(std::chrono::milliseconds now) {
    constexpr std::int64_t kCounts = std::int64_t{1} << 21;
    constexpr std::int64_t kLatest = (std::int64_t{1} << 42) - 1;
    const std::int64_t time = std::clamp<std::int64_t>(now.count(), 0, kLatest);
    last_ = std::max(time * kCounts, last_ + 1);
    return last_;
}

}  // namespace Orvel::Service
