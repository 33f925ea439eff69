#include "relay/client/waiter_posix.h"

#include <errno.h>
#include <poll.h>
#include <time.h>

#include <algorithm>

namespace Orvel::Relay::Client {
namespace {

timespec toTimespec(std::chrono::nanoseconds duration) {
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(duration);
    timespec result{};
    result.tv_sec = static_cast<time_t>(whole.count());
    result.tv_nsec = static_cast<long>((duration - whole).count());
    return result;
}

class SystemWaiter final : public Waiter {
  public:
    TimePoint now() override { return std::chrono::steady_clock::now(); }

    short wait(int descriptor, short events, TimePoint until) override {
        pollfd watched{descriptor, events, 0};
        for (;;) {
            const auto left = std::max(until - now(), TimePoint::duration::zero());
            const timespec timeout = toTimespec(left);
            const int ready = ::ppoll(&watched, 1, &timeout, nullptr);
            if (ready > 0) {
                return watched.revents;
            }
            // A wait that the system cannot make is one that brings nothing.
            if (ready == 0 || errno != EINTR) {
                return 0;
            }
        }
    }
};

}  // namespace

Waiter& systemWaiter() {
    static SystemWaiter waiter;
    return waiter;
}

}  // namespace Orvel::Relay::Client
