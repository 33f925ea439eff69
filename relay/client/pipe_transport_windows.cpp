#include "relay/client/pipe_transport_windows.h"

#include <algorithm>
#include <array>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/client/awaited_events_windows.h"

namespace Orvel::Relay::Client {
namespace {

// Nothing when all instances of the pipe are taken.
std::optional<std::int32_t> statusOfRefusal(DWORD error) {
    switch (error) {
        case ERROR_PIPE_BUSY:
            return std::nullopt;
        case ERROR_ACCESS_DENIED:
            return Status::kAccessDenied;
        case ERROR_TOO_MANY_OPEN_FILES:
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
        case ERROR_NO_SYSTEM_RESOURCES:
        case ERROR_NONPAGED_SYSTEM_RESOURCES:
        case ERROR_PAGED_SYSTEM_RESOURCES:
        case ERROR_WORKING_SET_QUOTA:
        case ERROR_PAGEFILE_QUOTA:
        case ERROR_COMMITMENT_LIMIT:
        case ERROR_NOT_ENOUGH_QUOTA:
            return Status::kOutOfResources;
        default:
            return Status::kServerUnavailable;
    }
}

// The longest name that the system gives a pipe, and the zero behind it.
using PipeName = std::array<wchar_t, 256 + 1>;

std::optional<PipeName> nameOf(const std::string& path) {
    PipeName name{};
    if (path.size() >= name.size()) {
        return std::nullopt;
    }
    // The paths of pipes are plain ASCII.
    std::copy(path.begin(), path.end(), name.begin());
    return name;
}

}  // namespace

PipeTransport::~PipeTransport() { disconnect(); }

bool PipeTransport::isConnected() const { return pipe_ != nullptr; }

std::optional<std::int32_t> PipeTransport::tryToConnect(const std::string& path) {
    const std::optional<PipeName> name = nameOf(path);
    if (!name) {
        return Status::kServerUnavailable;
    }
    // The generic right to write would include that to make further instances of the pipe, which no
    // server should grant.
    constexpr DWORD kAccess = GENERIC_READ | FILE_WRITE_DATA;
    constexpr DWORD kFlags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    pipe_ = ownedHandle(
        ::CreateFileW(name->data(), kAccess, 0, nullptr, OPEN_EXISTING, kFlags, nullptr));
    if (!pipe_) {
        return statusOfRefusal(::GetLastError());
    }
    if (!reading_.prepare() || !writing_.prepare()) {
        disconnect();
        return Status::kOutOfResources;
    }
    return Status::kSuccess;
}

void PipeTransport::disconnect() noexcept {
    reading_.release(pipe_.get());
    writing_.release(pipe_.get());
    pipe_.reset();
    unread_ = {};
}

Transfer PipeTransport::send(std::span<const std::span<const std::byte>> pieces) {
    if (writing_.isUnderWay(pipe_.get())) {
        return {Outcome::kNothingYet, 0};
    }
    std::size_t count = 0;
    for (const std::span<const std::byte> piece : pieces) {
        const std::span<std::byte> room = writing_.memory().subspan(count);
        const std::size_t fits = std::min(room.size(), piece.size());
        std::copy_n(piece.begin(), fits, room.begin());
        count += fits;
    }
    if (!writing_.hasFailed()) {
        writing_.write(pipe_.get(), count);
    }
    if (writing_.hasFailed()) {
        return {Outcome::kLost, 0};
    }
    return {Outcome::kMoved, count};
}

Transfer PipeTransport::receive(std::span<std::byte> room) {
    if (!canReceive()) {
        return {Outcome::kNothingYet, 0};
    }
    if (unread_.empty()) {
        return {Outcome::kLost, 0};
    }
    const std::size_t count = std::min(room.size(), unread_.size());
    std::copy_n(unread_.begin(), count, room.begin());
    unread_ = unread_.subspan(count);
    return {Outcome::kMoved, count};
}

// Keeps a read under way for as long as there is nothing to hand on.
bool PipeTransport::canReceive() {
    const HANDLE pipe = pipe_.get();
    if (unread_.empty() && !reading_.isUnderWay(pipe)) {
        unread_ = reading_.takeBytes();
        if (unread_.empty() && !reading_.hasFailed()) {
            reading_.read(pipe);
            unread_ = reading_.isUnderWay(pipe) ? unread_ : reading_.takeBytes();
        }
    }
    return !unread_.empty() || reading_.hasFailed();
}

Readiness PipeTransport::wait(bool sending, TimePoint until) {
    const std::array<HANDLE, 2> events{reading_.event(), writing_.event()};
    AwaitedEvents awaited(std::span(events).first(sending ? 2 : 1));
    for (bool timeIsLeft = true;;) {
        const Readiness ready{canReceive(), sending && !writing_.isUnderWay(pipe_.get())};
        if (ready.toReceive || ready.toSend || !timeIsLeft) {
            return ready;
        }
        if (!waiter().wait(awaited, until)) {
            return {};
        }
        // A server may write no bytes at all, as often as it likes: that ends reads, but must not
        // hold up the deadline.
        timeIsLeft = waiter().now() < until;
    }
}

std::unique_ptr<Transport> makeTransport(std::vector<std::string> paths, Waiter& waiter) {
    return std::make_unique<PipeTransport>(std::move(paths), waiter);
}

}  // namespace Orvel::Relay::Client
