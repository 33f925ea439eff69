#include "relay/client/awaited_events_windows.h"

#include <algorithm>

namespace Orvel::Relay::Client {
namespace {

// Rounded up, as a wait that is too short would be followed by many more. What does not fit is
// waited for in parts.
DWORD toMilliseconds(TimePoint::duration duration) {
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours{24};
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(duration);
    return static_cast<DWORD>(
        std::clamp(wait, std::chrono::milliseconds::zero(), kLongest).count());
}

}  // namespace

bool AwaitedEvents::comesBefore(TimePoint until) {
    for (;;) {
        const auto left = until - std::chrono::steady_clock::now();
        const DWORD result = ::WaitForMultipleObjects(static_cast<DWORD>(events_.size()),
                                                      events_.data(), FALSE, toMilliseconds(left));
        if (result != WAIT_TIMEOUT) {
            return result != WAIT_FAILED;
        }
        if (left <= TimePoint::duration::zero()) {
            return false;
        }
    }
}

}  // namespace Orvel::Relay::Client
