#include "tests/relay/scripted_server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

#include "relay/client/socket_transport_posix.h"
#include "tests/relay/frame_bytes.h"

namespace Orvel::Relay::Testing {

using Client::TimePoint;

ScriptedServer::ScriptedServer() {
    listening_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path().data(), path().size());
    if (::bind(listening_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listening_, 0) != 0) {
        throw std::runtime_error("the scripted server cannot listen");
    }
}

ScriptedServer::~ScriptedServer() {
    closeNow();
    stopListening();
}

ScriptedServer& ScriptedServer::add(Step step) {
    steps_.push_back(std::move(step));
    return *this;
}

ScriptedServer& ScriptedServer::accept() {
    return add([this] {
        const int accepted = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (accepted < 0) {
            return Progress::kNone;
        }
        closeNow();
        connection_ = accepted;
        return Progress::kDone;
    });
}

ScriptedServer::Progress ScriptedServer::receiveUpTo(std::size_t& missing) {
    std::array<char, 65536> buffer;
    const ssize_t count =
        ::recv(connection_, buffer.data(), std::min(missing, buffer.size()), MSG_DONTWAIT);
    if (count <= 0) {
        return Progress::kNone;
    }
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    missing -= static_cast<std::size_t>(count);
    return missing == 0 ? Progress::kDone : Progress::kSome;
}

ScriptedServer& ScriptedServer::receive(std::size_t bytes) {
    return add([this, bytes, missing = bytes]() mutable {
        const Progress progress = receiveUpTo(missing);
        if (progress == Progress::kDone) {
            missing = bytes;
        }
        return progress;
    });
}

ScriptedServer& ScriptedServer::receiveFrame() {
    // The header first; then what it announces.
    return add([this, missing = Wire::kHeaderSize, header = true]() mutable {
        Progress progress = receiveUpTo(missing);
        if (progress == Progress::kDone && header) {
            const std::string bytes = received_.substr(received_.size() - Wire::kHeaderSize);
            const auto read = Wire::decode(reinterpret_cast<const std::byte*>(bytes.data()));
            missing = read ? read->targetLength + read->bodyLength : 0;
            header = false;
            progress = missing == 0 ? Progress::kDone : Progress::kSome;
        }
        if (progress == Progress::kDone) {
            missing = Wire::kHeaderSize;
            header = true;
        }
        return progress;
    });
}

ScriptedServer& ScriptedServer::send(std::string bytes) {
    return add([this, bytes = std::move(bytes), sent = std::size_t{0}]() mutable {
        const ssize_t count = ::send(connection_, bytes.data() + sent, bytes.size() - sent,
                                     MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0) {
            return Progress::kNone;
        }
        sent += static_cast<std::size_t>(count);
        if (sent < bytes.size()) {
            return Progress::kSome;
        }
        sent = 0;
        return Progress::kDone;
    });
}

ScriptedServer& ScriptedServer::pause(std::chrono::milliseconds time) {
    return add([this, time, end = std::optional<TimePoint>()]() mutable {
        if (!end) {
            end = now_ + time;
        }
        if (now_ < *end) {
            pauseUntil_ = *end;
            return Progress::kNone;
        }
        end.reset();
        return Progress::kDone;
    });
}

ScriptedServer& ScriptedServer::close() {
    return add([this] {
        closeNow();
        return Progress::kDone;
    });
}

ScriptedServer& ScriptedServer::forever() {
    return add([this] {
        repeats_ = true;
        return Progress::kDone;
    });
}

ScriptedServer& ScriptedServer::welcome(std::uint32_t largestBody) {
    return accept().receiveFrame().send(welcomeFrame(largestBody));
}

ScriptedServer::Progress ScriptedServer::takeStep() {
    const bool repeats = repeats_;
    const Progress progress = steps_.front()();
    if (progress == Progress::kDone) {
        if (repeats) {
            steps_.push_back(std::move(steps_.front()));
        }
        steps_.pop_front();
    }
    return progress;
}

void ScriptedServer::proceed() {
    while (!steps_.empty() && takeStep() != Progress::kNone) {
    }
}

void ScriptedServer::closeNow() {
    if (connection_ >= 0) {
        ::close(std::exchange(connection_, -1));
    }
}

void ScriptedServer::startOver() {
    closeNow();
    steps_.clear();
    repeats_ = false;
    perLook_ = std::chrono::milliseconds(0);
}

void ScriptedServer::stopListening() {
    if (listening_ >= 0) {
        ::close(std::exchange(listening_, -1));
    }
}

std::unique_ptr<Client::EndpointClient> ScriptedServer::makeClient() {
    return makeClient({path()});
}

std::unique_ptr<Client::EndpointClient> ScriptedServer::makeClient(std::vector<std::string> paths) {
    return std::make_unique<Client::EndpointClient>(
        std::make_unique<Client::SocketTransport>(std::move(paths), *this));
}

std::chrono::milliseconds ScriptedServer::elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_ - start_);
}

TimePoint ScriptedServer::now() {
    now_ += perLook_;
    return now_;
}

short ScriptedServer::wait(int descriptor, short events, TimePoint until) {
    for (;;) {
        pollfd watched{descriptor, events, 0};
        if (descriptor >= 0 && ::poll(&watched, 1, 0) > 0) {
            return watched.revents;
        }
        pauseUntil_ = until;
        if (!steps_.empty() && takeStep() != Progress::kNone) {
            continue;
        }
        now_ = std::max(now_, std::min(until, pauseUntil_));
        if (elapsed() > std::chrono::hours(24)) {
            throw std::runtime_error("the client waits for ever");
        }
        if (now_ >= until) {
            return 0;
        }
    }
}

}  // namespace Orvel::Relay::Testing
