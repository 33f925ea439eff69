#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <utility>

#include "tests/relay/server_end.h"
#include "tests/relay/temporary_folder.h"

namespace Orvel::Relay::Testing {

struct ServerEnd::State {
    TemporaryFolder folder;
    int listening = -1;
    int connection = -1;
};

ServerEnd::ServerEnd() : state_(std::make_unique<State>()) {
    state_->listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path().data(), path().size());
    if (::bind(state_->listening, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(state_->listening, 0) != 0) {
        throw std::runtime_error("the scripted server cannot listen");
    }
}

ServerEnd::~ServerEnd() {
    close();
    stopListening();
}

std::string ServerEnd::path() const { return pathBeside("scripted.sock"); }

std::string ServerEnd::pathBeside(const std::string& name) const {
    return state_->folder.file(name);
}

bool ServerEnd::accept() {
    const int accepted =
        ::accept4(state_->listening, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (accepted < 0) {
        return false;
    }
    close();
    state_->connection = accepted;
    return true;
}

std::size_t ServerEnd::receive(std::span<char> room) {
    const ssize_t count = ::recv(state_->connection, room.data(), room.size(), MSG_DONTWAIT);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::optional<std::size_t> ServerEnd::send(std::string_view bytes) {
    const ssize_t count =
        ::send(state_->connection, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(count);
}

void ServerEnd::close() {
    if (state_->connection >= 0) {
        ::close(std::exchange(state_->connection, -1));
    }
}

void ServerEnd::stopListening() {
    if (state_->listening >= 0) {
        ::close(std::exchange(state_->listening, -1));
    }
}

}  // namespace Orvel::Relay::Testing
