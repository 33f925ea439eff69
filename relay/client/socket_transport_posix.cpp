#include "relay/client/socket_transport_posix.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Client {
namespace {

// A server whose queue of connections is full makes room within moments, but the system offers no
// wait for that: it is asked again, ever less often.
constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{50};

std::optional<sockaddr_un> addressOf(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) {
        return std::nullopt;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

std::int32_t statusOfRefusal(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return Status::kAccessDenied;
        case EMFILE:
        case ENFILE:
        case ENOBUFS:
        case ENOMEM:
            return Status::kOutOfResources;
        default:
            return Status::kServerUnavailable;
    }
}

Transfer moved(ssize_t count) {
    if (count > 0) {
        return {Outcome::kMoved, static_cast<std::size_t>(count)};
    }
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return {Outcome::kNothingYet, 0};
    }
    return {Outcome::kLost, 0};
}

}  // namespace

SocketTransport::SocketTransport(std::vector<std::string> paths, Waiter& waiter)
    : paths_(std::move(paths)), waiter_(waiter) {}

SocketTransport::~SocketTransport() { disconnect(); }

TimePoint SocketTransport::now() { return waiter_.now(); }

bool SocketTransport::isConnected() const { return socket_ >= 0; }

std::int32_t SocketTransport::connect(TimePoint until) {
    std::int32_t status = Status::kServerUnavailable;
    for (const std::string& path : paths_) {
        status = connectTo(path, until);
        if (status != Status::kServerUnavailable) {
            break;
        }
    }
    return status;
}

std::int32_t SocketTransport::connectTo(const std::string& path, TimePoint until) {
    const std::optional<sockaddr_un> address = addressOf(path);
    if (!address) {
        return Status::kServerUnavailable;
    }
    socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket_ < 0) {
        return statusOfRefusal(errno);
    }
    std::int32_t status = Status::kSuccess;
    auto pause = kFirstPause;
    while (::connect(socket_, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        if (errno == EINTR) {
            continue;
        }
        if (errno != EAGAIN) {
            status = statusOfRefusal(errno);
            break;
        }
        const TimePoint time = waiter_.now();
        if (time >= until) {
            status = Status::kTimeout;
            break;
        }
        waiter_.wait(-1, 0, std::min<TimePoint>(until, time + pause));
        pause = std::min(2 * pause, kLongestPause);
    }
    if (status != Status::kSuccess) {
        disconnect();
    }
    return status;
}

void SocketTransport::disconnect() noexcept {
    if (socket_ >= 0) {
        // Never repeated: the descriptor is gone even when a signal interrupts its closing.
        ::close(socket_);
        socket_ = -1;
    }
}

Transfer SocketTransport::send(std::span<const std::span<const std::byte>> pieces) {
    std::array<iovec, kMostPieces> parts;
    msghdr message{};
    message.msg_iov = parts.data();
    for (const std::span<const std::byte> piece : pieces) {
        if (!piece.empty()) {
            iovec& part = parts[message.msg_iovlen++];
            part.iov_base = const_cast<std::byte*>(piece.data());
            part.iov_len = piece.size();
        }
    }
    ssize_t count = 0;
    do {
        count = ::sendmsg(socket_, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    return moved(count);
}

Transfer SocketTransport::receive(std::span<std::byte> room) {
    ssize_t count = 0;
    do {
        count = ::recv(socket_, room.data(), room.size(), MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    return moved(count);
}

Readiness SocketTransport::wait(bool sending, TimePoint until) {
    const short wanted = sending ? POLLIN | POLLOUT : POLLIN;
    const short events = waiter_.wait(socket_, wanted, until);
    Readiness ready;
    // A connection that is over can be received from: that is how its end is told.
    ready.toReceive = (events & ~POLLOUT) != 0;
    ready.toSend = (events & POLLOUT) != 0;
    return ready;
}

std::unique_ptr<Transport> makeTransport(const std::string& endpoint) {
    std::vector<std::string> paths;
    if (!endpoint.empty()) {
        paths = Wire::pathsToTry(Wire::foldersOfThisProcess(), endpoint);
    }
    return std::make_unique<SocketTransport>(std::move(paths), systemWaiter());
}

}  // namespace Orvel::Relay::Client
