#include "end_to_end/pipe_service_windows.h"

#include <array>
#include <optional>
#include <stdexcept>
#include <utility>

#include "relay/wire/frame.h"
#include "tests/relay/frame_bytes.h"

namespace Orvel::TestSupport {
namespace {

using Relay::WideString;
using Relay::Wire::FrameType;

WideString textOf(const std::vector<unsigned char>& bytes) {
    WideString text(bytes.size() / 2, L'\0');
    for (std::size_t unit = 0; unit < text.size(); ++unit) {
        text[unit] = static_cast<Relay::WideChar>(bytes[2 * unit] | bytes[2 * unit + 1] << 8);
    }
    return text;
}

}  // namespace

std::wstring pipeOfThisProcess() {
    const std::wstring folder = L"orvel-test-" + std::to_wstring(::GetCurrentProcessId());
    ::SetEnvironmentVariableW(L"ORVEL_RPC_DIRECTORY", folder.c_str());
    return LR"(\\.\pipe\)" + folder + LR"(\OrvelAnalyticsRpcEndpoint)";
}

PipeService::PipeService(std::function<WideString(const WideString&)> answer)
    : answer_(std::move(answer)),
      pipe_(::CreateNamedPipeW(
          pipeOfThisProcess().c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE,
          PIPE_TYPE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, 65536, 65536, 0, nullptr)) {
    if (pipe_ == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("the service's pipe cannot be made");
    }
    thread_ = std::thread([this] { serve(); });
}

PipeService::~PipeService() { stop(); }

void PipeService::stop() {
    if (!thread_.joinable()) {
        return;
    }
    stopping_ = true;
    // The thread waits for a connection, so it gets one.
    const std::wstring name = pipeOfThisProcess();
    HANDLE last = INVALID_HANDLE_VALUE;
    while (last == INVALID_HANDLE_VALUE) {
        ::WaitNamedPipeW(name.c_str(), NMPWAIT_WAIT_FOREVER);
        last = ::CreateFileW(name.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    thread_.join();
    ::CloseHandle(last);
    ::CloseHandle(pipe_);
}

void PipeService::serve() {
    for (;;) {
        if (!::ConnectNamedPipe(pipe_, nullptr) && ::GetLastError() != ERROR_PIPE_CONNECTED) {
            return;
        }
        if (stopping_) {
            return;
        }
        converse();
        ::DisconnectNamedPipe(pipe_);
    }
}

void PipeService::converse() {
    using namespace Relay::Testing;
    Relay::Wire::HeaderBytes header;
    while (receive(header.data(), header.size())) {
        const auto frame = Relay::Wire::decode(header.data());
        std::vector<unsigned char> target(frame ? frame->targetLength : 0);
        std::vector<unsigned char> body(frame ? static_cast<std::size_t>(frame->bodyLength) : 0);
        if (!frame || !receive(target.data(), target.size()) ||
            !receive(body.data(), body.size())) {
            return;
        }
        if (frame->type == FrameType::kHello) {
            send(welcomeFrame());
        } else {
            commands_.push_back(textOf(body));
            send(replyFrame(frame->id, answer_(commands_.back())));
        }
    }
}

bool PipeService::receive(void* room, std::size_t size) {
    auto* at = static_cast<unsigned char*>(room);
    while (size > 0) {
        DWORD count = 0;
        if (!::ReadFile(pipe_, at, static_cast<DWORD>(size), &count, nullptr) || count == 0) {
            return false;
        }
        at += count;
        size -= count;
    }
    return true;
}

void PipeService::send(const std::string& bytes) {
    DWORD count = 0;
    ::WriteFile(pipe_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
}

}  // namespace Orvel::TestSupport
