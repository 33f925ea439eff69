#include "tests/relay/raw_client.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Orvel::Relay::Testing {

RawClient::RawClient(const std::string& path) {
    socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // A server that fails a test must not hang it.
    const timeval patience{30, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("nobody listens at " + path);
    }
}

RawClient::~RawClient() { close(); }

void RawClient::send(const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count =
            ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return;
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string RawClient::receive(std::size_t bytes) {
    std::string received;
    std::array<char, 65536> buffer;
    while (received.size() < bytes) {
        const ssize_t count =
            ::recv(socket_, buffer.data(), std::min(buffer.size(), bytes - received.size()), 0);
        if (count <= 0) {
            break;
        }
        received.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return received;
}

std::string RawClient::receiveRest() { return receive(std::numeric_limits<std::size_t>::max()); }

bool RawClient::waitForEnd() {
    std::array<char, 65536> buffer;
    ssize_t count = 0;
    do {
        count = ::recv(socket_, buffer.data(), buffer.size(), 0);
    } while (count > 0);
    return count == 0 || errno == ECONNRESET;
}

void RawClient::close() {
    if (socket_ >= 0) {
        ::close(std::exchange(socket_, -1));
    }
}

}  // namespace Orvel::Relay::Testing
