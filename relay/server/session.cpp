#include "relay/server/session.h"

#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <errno.h>
#include <sys/socket.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "orvel/relay/rpc_client.h"

namespace Orvel::Relay::Server {
namespace {

using Wire::FrameHeader;
using Wire::FrameType;
using Wire::kHeaderSize;

Peer peerOf(int socket) {
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot tell who connected");
    }
    Peer peer;
    peer.processId = credentials.pid;
    peer.userId = credentials.uid;
    peer.groupId = credentials.gid;
    return peer;
}

}  // namespace

Session::Session(Socket socket, const Service& service)
    : socket_(std::move(socket)),
      service_(service),
      watchdog_(std::make_shared<Watchdog>(socket_.get_executor(), [this] { closeSocket(); })),
      progress_(socket_.get_executor()) {}

Session::~Session() { watchdog_->retire(); }

asio::awaitable<void> Session::run() {
    // Keeps the session alive for as long as the conversation lasts.
    const auto self = shared_from_this();
    if (co_await greet()) {
        co_await serveCommands();
    }
}

void Session::stop() {
    stopping_ = true;
    if (!busy_) {
        closeSocket();
    }
}

// Whatever is being waited for ends with an error.
void Session::closeSocket() {
    std::error_code ignored;
    socket_.close(ignored);
}

asio::awaitable<bool> Session::greet() {
    const auto hello =
        co_await receiveHeader(Watchdog::Clock::now() + service_.options.frameDeadline);
    if (!hello) {
        co_return false;
    }
    if (hello->type != FrameType::kHello) {
        co_await sendError(Status::kProtocolError);
        co_return false;
    }
    Peer peer = peerOf(socket_.native_handle());
    if (!co_await receiveText(hello->bodyLength, peer.argument)) {
        co_return false;
    }
    conversation_ = service_.factory(peer);
    if (!conversation_) {
        co_await sendError(Status::kAccessDenied);
        co_return false;
    }
    FrameHeader welcome;
    welcome.type = FrameType::kWelcome;
    welcome.id = Wire::kGreetingId;
    welcome.code = service_.options.largestBody;
    co_return co_await send(welcome);
}

asio::awaitable<void> Session::serveCommands() {
    while (!stopping_) {
        id_ = Wire::idAfter(id_);
        const auto header =
            co_await receiveHeader(Watchdog::Clock::now() + service_.options.idleDeadline);
        if (!header) {
            co_return;
        }
        if (header->type != FrameType::kCommand || header->id != id_ ||
            header->bodyLength > service_.options.largestBody) {
            co_await sendError(Status::kProtocolError);
            co_return;
        }
        argument_ = header->code;
        if (!co_await receiveText(header->targetLength, target_) ||
            !co_await receiveText(header->bodyLength, command_)) {
            co_return;
        }
        busy_ = true;
        co_await execute();
        if (!answer_ || !co_await answer()) {
            co_return;
        }
        busy_ = false;
    }
}

// Lets a worker execute the command, and tells the client every now and then that it still is.
asio::awaitable<void> Session::execute() {
    answer_.reset();
    finished_ = false;
    asio::post(service_.workers, [this] { work(); });
    bool heard = true;
    while (!finished_) {
        // The client owes nothing now, however long this takes.
        watchdog_->rest();
        std::error_code interrupted;
        progress_.expires_after(service_.options.progressInterval);
        co_await progress_.async_wait(asio::redirect_error(asio::use_awaitable, interrupted));
        // A client that is gone does not end the command, which the worker still holds.
        if (!interrupted && !finished_ && heard) {
            FrameHeader progress;
            progress.type = FrameType::kProgress;
            progress.id = id_;
            heard = co_await send(progress);
        }
    }
}

// On a worker. What it throws ends with this connection.
void Session::work() {
    auto self = shared_from_this();
    try {
        answer_ = conversation_->execute(target_, argument_, std::move(command_));
    } catch (...) {
        answer_.reset();
    }
    finished_ = true;
    try {
        // The session must not die here: its socket and timers belong to the other thread.
        const auto executor = socket_.get_executor();
        asio::post(executor, [self = std::move(self)] { self->progress_.cancel(); });
    } catch (...) {
        // Without memory to tell it, the session sees it when it next looks.
    }
}

asio::awaitable<bool> Session::answer() {
    const Answer given = std::move(*answer_);
    if (given.status != Status::kSuccess) {
        co_return co_await sendError(given.status);
    }
    FrameHeader reply;
    reply.type = FrameType::kReply;
    reply.id = id_;
    reply.bodyLength = given.text.size() * sizeof(WideChar);
    if (reply.bodyLength > service_.options.largestBody) {
        co_return co_await sendError(Status::kTextTooLong);
    }
    co_return co_await send(reply, given.text);
}

// Nothing when the connection is over, which a client that sends no proper header brings about.
asio::awaitable<std::optional<FrameHeader>> Session::receiveHeader(TimePoint beginsUntil) {
    std::copy(inbox_.begin() + static_cast<std::ptrdiff_t>(read_),
              inbox_.begin() + static_cast<std::ptrdiff_t>(filled_), inbox_.begin());
    filled_ -= read_;
    read_ = 0;
    if (filled_ == 0 && !co_await receiveSome(inbox_, beginsUntil, filled_)) {
        co_return std::nullopt;
    }
    beginFrame();
    while (filled_ < kHeaderSize) {
        std::size_t count = 0;
        if (!co_await receiveSome(std::span(inbox_).subspan(filled_), nextStep(), count)) {
            co_return std::nullopt;
        }
        filled_ += count;
    }
    const auto header = Wire::decode(inbox_.data());
    if (!header) {
        co_await sendError(Status::kProtocolError);
        co_return std::nullopt;
    }
    read_ = kHeaderSize;
    co_return header;
}

asio::awaitable<bool> Session::receiveText(std::uint64_t length, WideString& text) {
    Wire::IncomingText incoming(length);
    read_ += incoming.take(std::span(inbox_).subspan(read_, filled_ - read_));
    while (!incoming.complete()) {
        std::size_t count = 0;
        if (!co_await receiveSome(incoming.room(), nextStep(), count)) {
            co_return false;
        }
        incoming.arrived(count);
    }
    text = std::move(incoming).finish();
    co_return true;
}

asio::awaitable<bool> Session::receiveSome(std::span<std::byte> room, TimePoint until,
                                           std::size_t& count) {
    watchdog_->watch(until);
    std::error_code error;
    count = co_await socket_.async_read_some(asio::buffer(room.data(), room.size()),
                                             asio::redirect_error(asio::use_awaitable, error));
    co_return !error;
}

asio::awaitable<bool> Session::send(FrameHeader header, WideStringView body) {
    const Wire::HeaderBytes head = Wire::encode(header);
    const Wire::OutgoingText text(body);
    std::array<asio::const_buffer, 2> parts = {
        asio::buffer(head), asio::buffer(text.bytes().data(), text.bytes().size())};
    beginFrame();
    while (asio::buffer_size(parts) > 0) {
        watchdog_->watch(nextStep());
        std::error_code error;
        const std::size_t count = co_await socket_.async_write_some(
            parts, asio::redirect_error(asio::use_awaitable, error));
        if (error) {
            co_return false;
        }
        const std::size_t ofHead = std::min(count, parts[0].size());
        parts[0] += ofHead;
        parts[1] += count - ofHead;
    }
    co_return true;
}

asio::awaitable<bool> Session::sendError(std::int32_t status) {
    FrameHeader error;
    error.type = FrameType::kError;
    error.id = id_;
    error.code = static_cast<std::uint32_t>(status);
    co_return co_await send(error);
}

void Session::beginFrame() {
    frameUntil_ = Watchdog::Clock::now() + service_.options.wholeFrameDeadline;
}

Session::TimePoint Session::nextStep() const {
    return std::min<TimePoint>(Watchdog::Clock::now() + service_.options.frameDeadline,
                               frameUntil_);
}

}  // namespace Orvel::Relay::Server
