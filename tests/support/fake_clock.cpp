#include "support/fake_clock.h"

#include <atomic>

#include "text/clock.h"

namespace {

std::atomic<std::int64_t> now = Orvel::TestSupport::kSomeTime;

}  // namespace

namespace Orvel::TestSupport {

void setCurrentTime(std::int64_t seconds) { now = seconds; }

}  // namespace Orvel::TestSupport

namespace Orvel::Analytics::Text {

/// Stands in for the library's own clock when a program is linked with it.
std::int64_t currentTime() { return now; }

}  // namespace Orvel::Analytics::Text
