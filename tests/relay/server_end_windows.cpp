#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>
#include <utility>

#include "relay/client/handle_windows.h"
#include "tests/relay/server_end.h"

namespace Orvel::Relay::Testing {
namespace {

using Client::Handle;
using Client::ownedHandle;

// Something that the system does meanwhile.
class Overlapped {
  public:
    Overlapped() : event_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    OVERLAPPED* begin() {
        state_ = {};
        state_.hEvent = event_.get();
        return &state_;
    }

    bool isOver() const { return ::WaitForSingleObject(event_.get(), 0) == WAIT_OBJECT_0; }
    void setOver() { ::SetEvent(event_.get()); }

    // Waits for the end; nothing when it is not a good one.
    std::optional<std::size_t> result(HANDLE pipe) {
        DWORD count = 0;
        if (!::GetOverlappedResult(pipe, &state_, &count, TRUE)) {
            return std::nullopt;
        }
        return count;
    }

    void cancel(HANDLE pipe) {
        ::CancelIoEx(pipe, &state_);
        result(pipe);
    }

  private:
    Handle event_;
    OVERLAPPED state_{};
};

std::string folderOfItsOwn() {
    static std::atomic<int> folders = 0;
    return R"(\\.\pipe\orvel-test-)" + std::to_string(::GetCurrentProcessId()) + '-' +
           std::to_string(folders++);
}

}  // namespace

struct ServerEnd::State {
    void listen(DWORD flags);
    bool beginToSend(std::string_view bytes);

    std::string folder = folderOfItsOwn();
    Handle listening;
    Overlapped connecting;
    Handle connection;
    Overlapped receiving;
    Overlapped sending;
    // The system's until the sending is over; there is one when it is not empty.
    std::string sent;
};

// An instance of the pipe takes one client. A new one waits in its stead as soon as it has.
void ServerEnd::State::listen(DWORD flags) {
    constexpr DWORD kRoom = 64 * 1024;
    const std::string path = folder + R"(\scripted)";
    listening = ownedHandle(::CreateNamedPipeA(
        path.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | flags,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
        PIPE_UNLIMITED_INSTANCES, kRoom, kRoom, 0, nullptr));
    if (!listening) {
        throw std::runtime_error("the scripted server cannot listen");
    }
    if (::ConnectNamedPipe(listening.get(), connecting.begin()) ||
        ::GetLastError() == ERROR_PIPE_CONNECTED) {
        connecting.setOver();
    }
}

bool ServerEnd::State::beginToSend(std::string_view bytes) {
    sent = bytes;
    if (!::WriteFile(connection.get(), sent.data(), static_cast<DWORD>(sent.size()), nullptr,
                     sending.begin()) &&
        ::GetLastError() != ERROR_IO_PENDING) {
        sent.clear();
    }
    return !sent.empty();
}

ServerEnd::ServerEnd() : state_(std::make_unique<State>()) {
    state_->listen(FILE_FLAG_FIRST_PIPE_INSTANCE);
}

ServerEnd::~ServerEnd() {
    close();
    stopListening();
}

std::string ServerEnd::path() const { return pathBeside("scripted"); }

std::string ServerEnd::pathBeside(const std::string& name) const {
    return state_->folder + '\\' + name;
}

bool ServerEnd::accept() {
    if (!state_->listening || !state_->connecting.isOver()) {
        return false;
    }
    close();
    state_->connection = std::move(state_->listening);
    state_->listen(0);
    return true;
}

std::size_t ServerEnd::receive(std::span<char> room) {
    const HANDLE pipe = state_->connection.get();
    DWORD there = 0;
    if (!::PeekNamedPipe(pipe, nullptr, 0, nullptr, &there, nullptr) || there == 0) {
        return 0;
    }
    const DWORD count = std::min(there, static_cast<DWORD>(room.size()));
    if (!::ReadFile(pipe, room.data(), count, nullptr, state_->receiving.begin()) &&
        ::GetLastError() != ERROR_IO_PENDING) {
        return 0;
    }
    return state_->receiving.result(pipe).value_or(0);
}

std::optional<std::size_t> ServerEnd::send(std::string_view bytes) {
    if (bytes.empty()) {
        return 0;
    }
    const bool begins = state_->sent.empty();
    if (begins && !state_->beginToSend(bytes)) {
        return std::nullopt;
    }
    if (!state_->sending.isOver()) {
        // Once there is something for the client, but no more until it has taken that.
        return begins ? std::optional<std::size_t>(0) : std::nullopt;
    }
    state_->sent.clear();
    return state_->sending.result(state_->connection.get());
}

void ServerEnd::close() {
    if (!state_->sent.empty()) {
        state_->sending.cancel(state_->connection.get());
        state_->sent.clear();
    }
    state_->connection.reset();
}

void ServerEnd::stopListening() {
    if (state_->listening) {
        if (!state_->connecting.isOver()) {
            state_->connecting.cancel(state_->listening.get());
        }
        state_->listening.reset();
    }
}

}  // namespace Orvel::Relay::Testing
