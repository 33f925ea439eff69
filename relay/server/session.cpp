#include "relay/server/session.h"

#include <errno.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

#include "orvel/relay/rpc_client.h"

namespace Orvel::Relay::Server {
namespace {

using Wire::FrameHeader;
using Wire::FrameType;
using Wire::kHeaderSize;
using Clock = Alarm::Clock;

// After that much, a client that sends without a pause lets others take their turn.
constexpr std::size_t kMostAtATime = std::size_t{4} * 1024 * 1024;

// How long a thread waits for a client that has just been heard. Whoever has more to say says it
// within less; whoever has not costs the thread no more than this, or a tick of the system's clock.
constexpr std::chrono::microseconds kMoment{200};

void setWait(int socket, std::chrono::microseconds wait) {
    timeval time{};
    time.tv_usec = wait.count();
    if (::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot limit a wait");
    }
}

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

iovec part(std::span<const std::byte> bytes) {
    return {const_cast<std::byte*>(bytes.data()), bytes.size()};
}

// What is left of the bytes when so many of them, counted from before them, are gone.
std::span<const std::byte> rest(std::span<const std::byte> bytes, std::size_t gone) {
    return bytes.subspan(std::min(bytes.size(), gone));
}

bool takesAWait(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

}  // namespace

Session::Session(Descriptor socket, const Service& service)
    : socket_(std::move(socket)), service_(service) {
    setWait(socket_.get(), kMoment);
    expectFrame(service_.options.frameDeadline);
}

Session::Next Session::advance() {
    const std::lock_guard lock(mutex_);
    drained_ = false;
    return proceed();
}

// Nobody else touches what is being received, so the lock can wait.
std::optional<Session::Next> Session::linger() {
    std::span<std::byte> to;
    try {
        to = room();
    } catch (const std::bad_alloc&) {
        return Next::kEnd;
    }
    const ssize_t result = ::recv(socket_.get(), to.data(), to.size(), 0);
    const std::lock_guard lock(mutex_);
    if (received(to.size(), result) == 0 && !over_) {
        return std::nullopt;
    }
    return proceed();
}

Session::Next Session::execute() {
    std::optional<Answer> given;
    try {
        given = conversation_->execute(target_, header_.code, std::move(command_));
    } catch (...) {
        // It ends with this connection.
    }
    const std::lock_guard lock(mutex_);
    executing_ = false;
    if (!given) {
        return Next::kEnd;
    }
    try {
        answer(std::move(*given));
    } catch (const std::bad_alloc&) {
        return Next::kEnd;
    }
    return proceed();
}

void Session::look(TimePoint now) {
    const std::lock_guard lock(mutex_);
    if (over_) {
        return;
    }
    if (now < due_) {
        service_.alarm.setFor(due_);
    } else if (executing_) {
        sendProgress();
        setDue(now + service_.options.progressInterval);
    } else {
        cutOff();
    }
}

void Session::stop() {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    if (!executing_ && !text_) {
        cutOff();
    }
}

// Whoever waits for the client wakes up.
void Session::cutOff() {
    over_ = true;
    ::shutdown(socket_.get(), SHUT_RDWR);
}

Session::Next Session::proceed() {
    std::size_t taken = 0;
    try {
        for (;;) {
            if (text_ && !flush()) {
                return over_ ? Next::kEnd : Next::kOutput;
            }
            if (over_ || lastWords_) {
                return Next::kEnd;
            }
            if (executing_) {
                return Next::kExecution;
            }
            if (stopping_) {
                return Next::kEnd;
            }
            if (understand()) {
                continue;
            }
            if (drained_ || taken > kMostAtATime) {
                return Next::kInput;
            }
            taken += receive();
        }
    } catch (...) {
        // No memory, or no conversation, for this client: the others are none the worse.
        return Next::kEnd;
    }
}

// Goes on with what has been received; false when that is not enough.
bool Session::understand() {
    if (stage_ == Stage::kHeader) {
        if (unread().size() < kHeaderSize) {
            return false;
        }
        takeHeader();
        return true;
    }
    read_ += incoming_.take(unread());
    if (!incoming_.complete()) {
        return false;
    }
    takeText();
    return true;
}

void Session::takeHeader() {
    const auto header = Wire::decode(unread().data());
    read_ += kHeaderSize;
    const bool greeting = !conversation_;
    const bool due =
        header && (greeting ? header->type == FrameType::kHello
                            : header->type == FrameType::kCommand && header->id == id_ &&
                                  header->bodyLength <= service_.options.largestBody);
    if (!due) {
        sayLast(Status::kProtocolError);
        return;
    }
    header_ = *header;
    stage_ = greeting ? Stage::kBody : Stage::kTarget;
    incoming_ = Wire::IncomingText(greeting ? header_.bodyLength : header_.targetLength);
}

void Session::takeText() {
    WideString text = std::move(incoming_).finish();
    if (stage_ == Stage::kTarget) {
        target_ = std::move(text);
        stage_ = Stage::kBody;
        incoming_ = Wire::IncomingText(header_.bodyLength);
        return;
    }
    stage_ = Stage::kHeader;
    if (conversation_) {
        command_ = std::move(text);
        beginExecution();
    } else {
        Peer peer = peerOf(socket_.get());
        peer.argument = std::move(text);
        greet(peer);
    }
}

void Session::greet(const Peer& peer) {
    conversation_ = service_.factory(peer);
    if (!conversation_) {
        sayLast(Status::kAccessDenied);
        return;
    }
    FrameHeader welcome;
    welcome.type = FrameType::kWelcome;
    welcome.id = Wire::kGreetingId;
    welcome.code = service_.options.largestBody;
    say(welcome);
}

// The client owes nothing now, however long this takes.
void Session::beginExecution() {
    executing_ = true;
    setDue(Clock::now() + service_.options.progressInterval);
}

void Session::answer(Answer given) {
    FrameHeader reply;
    reply.type = FrameType::kReply;
    reply.id = id_;
    reply.bodyLength = std::uint64_t{given.text.size()} * sizeof(WideChar);
    if (given.status != Status::kSuccess) {
        sayError(given.status);
    } else if (reply.bodyLength > service_.options.largestBody) {
        sayError(Status::kTextTooLong);
    } else {
        say(reply, std::move(given.text));
    }
}

// Where more is to be received; never empty while that is wanted.
std::span<std::byte> Session::room() {
    if (stage_ != Stage::kHeader) {
        return incoming_.room();
    }
    std::copy(inbox_.begin() + static_cast<std::ptrdiff_t>(read_),
              inbox_.begin() + static_cast<std::ptrdiff_t>(filled_), inbox_.begin());
    filled_ -= read_;
    read_ = 0;
    return std::span(inbox_).subspan(filled_);
}

std::span<const std::byte> Session::unread() const {
    return std::span(inbox_).subspan(read_, filled_ - read_);
}

std::size_t Session::receive() {
    const std::span<std::byte> to = room();
    return received(to.size(), ::recv(socket_.get(), to.data(), to.size(), MSG_DONTWAIT));
}

// What came of an attempt to receive.
std::size_t Session::received(std::size_t wanted, std::ptrdiff_t result) {
    if (result < 0 && takesAWait(errno)) {
        drained_ = true;
        return 0;
    }
    if (result <= 0) {
        over_ = true;
        return 0;
    }
    const auto count = static_cast<std::size_t>(result);
    drained_ = count < wanted;
    const TimePoint now = Clock::now();
    if (stage_ == Stage::kHeader) {
        if (filled_ == 0) {
            beginFrame(now);
        }
        filled_ += count;
    } else {
        incoming_.arrived(count);
    }
    bytesMoved(now);
    return count;
}

// To be sent by `flush`.
void Session::say(FrameHeader header, WideString body) {
    head_ = Wire::encode(header);
    body_ = std::move(body);
    text_.emplace(body_);
    sent_ = 0;
    const TimePoint now = Clock::now();
    beginFrame(now);
    bytesMoved(now);
}

void Session::sayError(std::int32_t status) {
    FrameHeader error;
    error.type = FrameType::kError;
    error.id = id_;
    error.code = static_cast<std::uint32_t>(status);
    say(error);
}

void Session::sayLast(std::int32_t status) {
    sayError(status);
    lastWords_ = true;
}

// False when the frame is not through, because that takes a wait or because the connection is over.
bool Session::flush() {
    const std::size_t whole = kHeaderSize + text_->bytes().size();
    while (sent_ < whole) {
        std::array<iovec, 2> parts = {
            part(rest(head_, sent_)),
            part(rest(text_->bytes(), std::max(sent_, kHeaderSize) - kHeaderSize))};
        msghdr message{};
        message.msg_iov = parts.data();
        message.msg_iovlen = parts.size();
        const ssize_t count = ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0) {
            over_ = !takesAWait(errno);
            return false;
        }
        sent_ += static_cast<std::size_t>(count);
        bytesMoved(Clock::now());
    }
    text_.reset();
    WideString().swap(body_);
    if (!lastWords_) {
        id_ = Wire::idAfter(id_);
        expectFrame(service_.options.idleDeadline);
    }
    return true;
}

// A client that has not read what came before needs no further sign of life, and one that is gone
// does not end the command, which is still being executed.
void Session::sendProgress() {
    FrameHeader progress;
    progress.type = FrameType::kProgress;
    progress.id = id_;
    const Wire::HeaderBytes bytes = Wire::encode(progress);
    const ssize_t count =
        ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count > 0 && static_cast<std::size_t>(count) < bytes.size()) {
        // The answer would not be understood any more.
        cutOff();
    }
}

void Session::expectFrame(std::chrono::milliseconds within) {
    const TimePoint now = Clock::now();
    if (unread().empty()) {
        setDue(now + within);
    } else {
        beginFrame(now);
        bytesMoved(now);
    }
}

void Session::beginFrame(TimePoint now) { frameUntil_ = now + service_.options.wholeFrameDeadline; }

void Session::bytesMoved(TimePoint now) {
    setDue(std::min<TimePoint>(now + service_.options.frameDeadline, frameUntil_));
}

void Session::setDue(TimePoint due) {
    due_ = due;
    service_.alarm.setFor(due);
}

}  // namespace Orvel::Relay::Server
