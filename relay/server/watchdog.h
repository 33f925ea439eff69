#ifndef ORVEL_SERVER_WATCHDOG_H
#define ORVEL_SERVER_WATCHDOG_H

#include <asio/steady_timer.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <new>
#include <utility>

namespace Orvel::Relay::Server {

/// Calls back when a deadline passes, or before when there is no memory to wait for it any longer.
/// Moving the deadline away, which every command does, costs no more than an assignment: the timer
/// looks at it when it fires.
class Watchdog : public std::enable_shared_from_this<Watchdog> {
  public:
    using Clock = std::chrono::steady_clock;

    Watchdog(const asio::any_io_executor& executor, std::function<void()> expired)
        : timer_(executor), expired_(std::move(expired)) {}

    /// @return whether it will call back; false when there is no memory for that.
    bool watch(Clock::time_point deadline) {
        deadline_ = deadline;
        return firesAt_ <= deadline_ || arm();
    }

    /// Nothing is being waited for.
    void rest() { deadline_ = kNever; }

    /// The end: calls back no more.
    void retire() {
        rest();
        expired_ = nullptr;
        timer_.cancel();
    }

  private:
    static constexpr Clock::time_point kNever = Clock::time_point::max();

    bool arm() {
        try {
            timer_.expires_at(deadline_);
            timer_.async_wait([self = shared_from_this()](std::error_code error) {
                if (!error) {
                    self->fire();
                }
            });
            firesAt_ = deadline_;
        } catch (const std::bad_alloc&) {
            // What it waited for before has been cancelled already.
            firesAt_ = kNever;
        }
        return firesAt_ != kNever;
    }

    void fire() {
        firesAt_ = kNever;
        if (deadline_ == kNever) {
            return;
        }
        if (deadline_ <= Clock::now() || !arm()) {
            rest();
            expired_();
        }
    }

    asio::steady_timer timer_;
    std::function<void()> expired_;
    Clock::time_point deadline_ = kNever;
    Clock::time_point firesAt_ = kNever;
};

}  // namespace Orvel::Relay::Server

#endif
