#ifndef ORVEL_SERVER_WATCHDOG_H
#define ORVEL_SERVER_WATCHDOG_H

#include <asio/steady_timer.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace Orvel::Relay::Server {

/// Calls back when a deadline passes. Moving the deadline away, which every command does, costs no
/// more than an assignment: the timer looks at it when it fires.
class Watchdog : public std::enable_shared_from_this<Watchdog> {
  public:
    using Clock = std::chrono::steady_clock;

    Watchdog(const asio::any_io_executor& executor, std::function<void()> expired)
        : timer_(executor), expired_(std::move(expired)) {}

    void watch(Clock::time_point deadline) {
        deadline_ = deadline;
        if (deadline_ < firesAt_) {
            arm();
        }
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

    void arm() {
        firesAt_ = deadline_;
        timer_.expires_at(firesAt_);
        timer_.async_wait([self = shared_from_this()](std::error_code error) {
            if (!error) {
                self->fire();
            }
        });
    }

    void fire() {
        firesAt_ = kNever;
        if (deadline_ == kNever) {
            return;
        }
        if (Clock::now() < deadline_) {
            arm();
        } else {
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
