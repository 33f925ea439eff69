#ifndef ORVEL_SERVICE_TIME_ORDERED_IDS_H
#define ORVEL_SERVICE_TIME_ORDERED_IDS_H

#include <chrono>
#include <cstdint>

namespace Orvel::Service {

/// Makes identifiers that grow with time: milliseconds since 1970 in the upper 42 bits, a count in
/// the lower 21. When the clock goes backwards, or a count overflows, they go on from the last one.
class TimeOrderedIds {
  public:
    /// @param last the greatest identifier that was ever given; 0 when there was none.
    explicit TimeOrderedIds(std::int64_t last = 0) : last_(last) {}

    std::int64_t next(std::chrono::milliseconds now);

    /// The last one that was given.
    std::int64_t last() const { return last_; }

  private:
    std::int64_t last_;
};

}  // namespace Orvel::Service

#endif
