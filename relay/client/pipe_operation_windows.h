#ifndef ORVEL_CLIENT_PIPE_OPERATION_WINDOWS_H
#define ORVEL_CLIENT_PIPE_OPERATION_WINDOWS_H

#include <array>
#include <cstddef>
#include <span>
#include <utility>

#include "relay/client/handle_windows.h"

namespace Orvel::Relay::Client {

/// A read or a write of a pipe that goes on by itself, in memory of its own: the system may use
/// that memory until the operation is over, whatever becomes of the caller's.
class PipeOperation {
  public:
    PipeOperation() = default;
    PipeOperation(const PipeOperation&) = delete;
    PipeOperation& operator=(const PipeOperation&) = delete;

    /// Gets what operations need.
    /// @return false when the system has none left.
    bool prepare();

    /// Cancels what is under way, and gives back what was got. Returns when the system no longer
    /// uses the memory.
    void release(HANDLE pipe) noexcept;

    /// Begins an operation; none is under way. Writing takes the first `count` bytes of the memory,
    /// reading as many as come at once.
    void read(HANDLE pipe);
    void write(HANDLE pipe, std::size_t count);

    /// Finds out what has become of the operation, without waiting.
    /// @return whether it is still under way.
    bool isUnderWay(HANDLE pipe);

    /// Whether the last operation went wrong.
    bool hasFailed() const { return failed_; }

    /// What a read that is over has brought: once, and in the memory.
    std::span<const std::byte> takeBytes() {
        return std::span(memory_).first(std::exchange(count_, 0));
    }

    /// Not to be changed while an operation is under way.
    std::span<std::byte> memory() { return memory_; }

    /// Set when the operation is over.
    HANDLE event() const { return event_.get(); }

  private:
    void reset(std::size_t least);
    void begun(BOOL done);

    Handle event_;
    OVERLAPPED state_{};
    bool underWay_ = false;
    bool failed_ = false;
    // How many bytes it must move to be in order, and how many it has.
    std::size_t least_ = 0;
    std::size_t count_ = 0;
    // Whole frames of the usual size, and few steps for long ones.
    std::array<std::byte, std::size_t{32} * 1024> memory_;
};

}  // namespace Orvel::Relay::Client

#endif
