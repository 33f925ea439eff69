#include "bench/relay/raw_exchange.h"

#include <errno.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

namespace Orvel::Bench {
namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_un addressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(),
                std::min(path.native().size(), sizeof address.sun_path - 1));
    return address;
}

bool sendAll(int socket, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool receiveAll(int socket, std::span<std::byte> room) {
    return ::recv(socket, room.data(), room.size(), MSG_WAITALL) ==
           static_cast<ssize_t>(room.size());
}

bool receiveMessage(int socket, std::size_t length, Memory memory, std::span<std::byte> buffer) {
    if (memory == Memory::kReused) {
        return receiveAll(socket, buffer.first(length));
    }
    const auto fresh = std::make_unique_for_overwrite<std::byte[]>(length);
    return receiveAll(socket, {fresh.get(), length});
}

// Ends with the connection.
void serveConnection(int socket, std::span<const Exchange> exchanges, Memory memory,
                     std::span<std::byte> buffer) {
    for (const Exchange& exchange : exchanges) {
        if (!receiveMessage(socket, exchange.message, memory, buffer) ||
            !sendAll(socket, buffer.first(exchange.answer))) {
            return;
        }
    }
    receiveAll(socket, buffer.first(1));
}

void serve(const std::filesystem::path& path, const std::function<void()>& isListening,
           std::span<const Exchange> exchanges, Memory memory) {
    std::size_t longest = 0;
    for (const Exchange& exchange : exchanges) {
        longest = std::max({longest, exchange.message, exchange.answer});
    }
    std::vector<std::byte> buffer(longest);
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(path);
    if (::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listening, SOMAXCONN) != 0) {
        fail("cannot listen");
    }
    isListening();
    for (;;) {
        const int connection = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            fail("cannot accept a connection");
        }
        serveConnection(connection, exchanges, memory, buffer);
        ::close(connection);
    }
}

}  // namespace

ServiceProcess::Service rawService(std::vector<Exchange> exchanges, Memory memory) {
    return [exchanges = std::move(exchanges), memory](const std::filesystem::path& path,
                                                      const std::function<void()>& isListening) {
        serve(path, isListening, exchanges, memory);
    };
}

RawConnection::RawConnection(const std::filesystem::path& path)
    : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = addressOf(path);
    if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = errno;
        ::close(socket_);
        errno = error;
        fail("cannot connect");
    }
}

RawConnection::~RawConnection() { ::close(socket_); }

void RawConnection::exchange(std::span<const std::byte> message,
                             std::span<std::byte> answer) const {
    if (!sendAll(socket_, message) || !receiveAll(socket_, answer)) {
        fail("the connection is lost");
    }
}

}  // namespace Orvel::Bench
