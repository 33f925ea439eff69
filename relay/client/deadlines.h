#ifndef ORVEL_CLIENT_DEADLINES_H
#define ORVEL_CLIENT_DEADLINES_H

#include <algorithm>
#include <chrono>

/// @file
/// How long an operation of the client may take.

namespace Orvel::Relay::Client {

using TimePoint = std::chrono::steady_clock::time_point;

/// For connecting.
inline constexpr std::chrono::seconds kConnectDeadline{2};
/// Without a byte moving in either direction.
inline constexpr std::chrono::seconds kQuietDeadline{10};
/// For an operation, counted anew whenever the server says that it is working.
inline constexpr std::chrono::seconds kOperationDeadline{60};
/// For an operation, whatever the server says.
inline constexpr std::chrono::hours kLongestOperation{1};

/// The deadlines of one operation.
class Deadlines {
  public:
    explicit Deadlines(TimePoint now)
        : last_(now + kLongestOperation),
          operation_(now + kOperationDeadline),
          quiet_(now + kQuietDeadline) {}

    void bytesMoved(TimePoint now) { quiet_ = now + kQuietDeadline; }

    void serverIsWorking(TimePoint now) { operation_ = std::min(now + kOperationDeadline, last_); }

    /// Whether the operation has had its time, however much keeps moving.
    bool passed(TimePoint now) const { return now >= operation_; }

    /// Until when to wait.
    TimePoint next() const { return std::min(quiet_, operation_); }

  private:
    TimePoint last_;
    TimePoint operation_;
    TimePoint quiet_;
};

}  // namespace Orvel::Relay::Client

#endif
