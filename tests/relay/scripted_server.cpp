#include "tests/relay/scripted_server.h"

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/client/path_transport.h"
#include "tests/relay/frame_bytes.h"

namespace Orvel::Relay::Testing {

using Client::TimePoint;

ScriptedServer& ScriptedServer::add(Step step) {
    steps_.push_back(std::move(step));
    return *this;
}

ScriptedServer& ScriptedServer::accept() {
    return add([this] { return end_.accept() ? Progress::kDone : Progress::kNone; });
}

ScriptedServer::Progress ScriptedServer::receiveUpTo(std::size_t& missing) {
    std::array<char, 65536> buffer;
    const std::size_t count =
        end_.receive(std::span(buffer).first(std::min(missing, buffer.size())));
    if (count == 0) {
        return Progress::kNone;
    }
    received_.append(buffer.data(), count);
    missing -= count;
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
        const std::optional<std::size_t> count = end_.send(std::string_view(bytes).substr(sent));
        if (!count) {
            return Progress::kNone;
        }
        sent += *count;
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
            pauseEnd_ = *end;
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

void ScriptedServer::startOver() {
    closeNow();
    steps_.clear();
    repeats_ = false;
    perLook_ = std::chrono::milliseconds(0);
}

std::size_t ScriptedServer::fillQueue() {
    constexpr TimePoint kLongAgo{};
    for (;;) {
        auto another = Client::makeTransport({path()}, Client::systemWaiter());
        if (another->connect(kLongAgo) != Status::kSuccess) {
            return queue_.size();
        }
        queue_.push_back(std::move(another));
    }
}

std::unique_ptr<Client::EndpointClient> ScriptedServer::makeClient() {
    return makeClient({path()});
}

std::unique_ptr<Client::EndpointClient> ScriptedServer::makeClient(std::vector<std::string> paths) {
    return std::make_unique<Client::EndpointClient>(Client::makeTransport(std::move(paths), *this));
}

std::chrono::milliseconds ScriptedServer::elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(now_ - start_);
}

TimePoint ScriptedServer::now() {
    now_ += perLook_;
    return now_;
}

bool ScriptedServer::wait(Client::Awaited& awaited, TimePoint until) {
    constexpr TimePoint kOver{};
    do {
        if (awaited.comesBefore(kOver)) {
            return true;
        }
    } while (proceedUntil(until));
    return false;
}

void ScriptedServer::pauseUntil(TimePoint time) {
    while (proceedUntil(time)) {
    }
}

// Takes a step, or lets time pass; false when the time has come.
bool ScriptedServer::proceedUntil(TimePoint time) {
    pauseEnd_ = time;
    if (!steps_.empty() && takeStep() != Progress::kNone) {
        return true;
    }
    now_ = std::max(now_, std::min(time, pauseEnd_));
    if (elapsed() > std::chrono::hours(24)) {
        throw std::runtime_error("the client waits for ever");
    }
    return now_ < time;
}

}  // namespace Orvel::Relay::Testing
