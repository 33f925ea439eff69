#include "relay/client/socket_transport_posix.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/client/polled_descriptor_posix.h"
#include "relay/client/server_identity_posix.h"

namespace Orvel::Relay::Client {
namespace {

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

SocketTransport::~SocketTransport() { disconnect(); }

bool SocketTransport::isConnected() const { return socket_ >= 0; }

std::optional<std::int32_t> SocketTransport::tryToConnect(const std::string& path) {
    const std::optional<sockaddr_un> address = addressOf(path);
    if (!address) {
        return Status::kServerUnavailable;
    }
    socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket_ < 0) {
        return statusOfRefusal(errno);
    }
    int result = 0;
    do {
        result = ::connect(socket_, reinterpret_cast<const sockaddr*>(&*address), sizeof *address);
    } while (result != 0 && errno == EINTR);
    if (result == 0) {
        if (serverIsTrusted(socket_, path)) {
            return Status::kSuccess;
        }
        disconnect();
        return Status::kAccessDenied;
    }
    const int error = errno;
    disconnect();
    if (error == EAGAIN) {
        return std::nullopt;
    }
    return statusOfRefusal(error);
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
    PolledDescriptor polled(socket_, sending ? POLLIN | POLLOUT : POLLIN);
    Readiness ready;
    if (waiter().wait(polled, until)) {
        // A connection that is over can be received from: that is how its end is told.
        ready.toReceive = (polled.events() & ~POLLOUT) != 0;
        ready.toSend = (polled.events() & POLLOUT) != 0;
    }
    return ready;
}

std::unique_ptr<Transport> makeTransport(std::vector<std::string> paths, Waiter& waiter) {
    return std::make_unique<SocketTransport>(std::move(paths), waiter);
}

}  // namespace Orvel::Relay::Client
