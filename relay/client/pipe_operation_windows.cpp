#include "relay/client/pipe_operation_windows.h"

namespace Orvel::Relay::Client {

bool PipeOperation::prepare() {
    // Reset by the system whenever an operation begins.
    constexpr BOOL kManualReset = TRUE;
    event_ = ownedHandle(::CreateEventW(nullptr, kManualReset, FALSE, nullptr));
    failed_ = false;
    count_ = 0;
    return event_ != nullptr;
}

void PipeOperation::release(HANDLE pipe) noexcept {
    if (underWay_) {
        DWORD ignored = 0;
        ::CancelIoEx(pipe, &state_);
        // To ask for the end is not to have it: until then the system may still write.
        ::GetOverlappedResult(pipe, &state_, &ignored, TRUE);
        underWay_ = false;
    }
    event_.reset();
}

void PipeOperation::read(HANDLE pipe) {
    reset(0);
    begun(::ReadFile(pipe, memory_.data(), static_cast<DWORD>(memory_.size()), nullptr, &state_));
}

void PipeOperation::write(HANDLE pipe, std::size_t count) {
    reset(count);
    begun(::WriteFile(pipe, memory_.data(), static_cast<DWORD>(count), nullptr, &state_));
}

void PipeOperation::reset(std::size_t least) {
    least_ = least;
    state_ = {};
    state_.hEvent = event_.get();
    count_ = 0;
}

// An operation that was done at once ends like any other: with its event.
void PipeOperation::begun(BOOL done) {
    underWay_ = done || ::GetLastError() == ERROR_IO_PENDING;
    failed_ = !underWay_;
}

bool PipeOperation::isUnderWay(HANDLE pipe) {
    // The event is the last thing that an operation touches: before that, its state must not be
    // used for another one, though it may say that it is over.
    if (!underWay_ || ::WaitForSingleObject(event_.get(), 0) != WAIT_OBJECT_0) {
        return underWay_;
    }
    DWORD count = 0;
    const BOOL done = ::GetOverlappedResult(pipe, &state_, &count, FALSE);
    // The system gives an operation up when the thread that began it ends. That loses no bytes of a
    // read, so another thread may go on with the connection.
    const bool givenUp = !done && ::GetLastError() == ERROR_OPERATION_ABORTED;
    count_ = done ? count : 0;
    failed_ = (!done && !givenUp) || count_ < least_;
    underWay_ = false;
    return false;
}

}  // namespace Orvel::Relay::Client
