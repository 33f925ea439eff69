#ifndef ORVEL_SERVER_ALARM_H
#define ORVEL_SERVER_ALARM_H

#include <asio/dispatch.hpp>
#include <asio/io_context.hpp>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <utility>

#include "relay/server/watchdog.h"

namespace Orvel::Relay::Server {

/// Calls back when the earliest of the times that any thread has set has come. One serves all
/// sessions: deadlines mostly move away, and setting a later one than what is set already costs no
/// more than a look.
class Alarm {
  public:
    using Clock = Watchdog::Clock;
    using TimePoint = Clock::time_point;

    /// @param ring called on the thread that runs `io`; it may set the alarm again. No time is set
    ///     any more when it is called.
    Alarm(asio::io_context& io, std::function<void()> ring)
        : io_(io),
          ring_(std::move(ring)),
          watchdog_(std::make_shared<Watchdog>(io.get_executor(), [this] { fire(); })) {}
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm() {
        try {
            watchdog_->retire();
        } catch (const std::exception&) {
            // A timer that cannot be cancelled finds nobody to call.
        }
    }

    /// Any thread. When there is no memory for it, the alarm does not ring for this time, and the
    /// next one is set as if nothing was set before.
    void setFor(TimePoint time) noexcept {
        auto earliest = next_.load();
        do {
            if (time >= earliest) {
                return;
            }
        } while (!next_.compare_exchange_weak(earliest, time));
        // Timers belong to the thread that runs the server.
        try {
            asio::dispatch(io_, [this] { watch(); });
        } catch (const std::bad_alloc&) {
            forget(time);
        }
    }

  private:
    void watch() {
        const TimePoint time = next_;
        if (!watchdog_->watch(time)) {
            forget(time);
        }
    }

    // Unless an earlier time was set meanwhile.
    void forget(TimePoint time) { next_.compare_exchange_strong(time, TimePoint::max()); }

    void fire() {
        next_ = TimePoint::max();
        ring_();
    }

    asio::io_context& io_;
    std::function<void()> ring_;
    std::shared_ptr<Watchdog> watchdog_;
    std::atomic<TimePoint> next_ = TimePoint::max();
};

}  // namespace Orvel::Relay::Server

#endif
