#include "relay/client/polled_descriptor_posix.h"

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

}  // namespace

bool PolledDescriptor::comesBefore(TimePoint until) {
    pollfd watched{descriptor_, wanted_, 0};
    int ready = 0;
    do {
        const auto left =
            std::max(until - std::chrono::steady_clock::now(), TimePoint::duration::zero());
        const timespec timeout = toTimespec(left);
        ready = ::ppoll(&watched, 1, &timeout, nullptr);
    } while (ready < 0 && errno == EINTR);
    came_ = ready > 0 ? watched.revents : short{0};
    return ready > 0;
}

}  // namespace Orvel::Relay::Client
