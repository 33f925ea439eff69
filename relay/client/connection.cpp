#include "relay/client/connection.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "orvel/relay/rpc_client.h"

namespace Orvel::Relay::Client {
namespace {

using Wire::FrameHeader;
using Wire::FrameType;
using Wire::kHeaderSize;

std::uint64_t bytesOf(WideStringView text) { return std::uint64_t{text.size()} * sizeof(WideChar); }

// The parts of a frame that are still to be sent.
class Outgoing {
  public:
    Outgoing(std::span<const std::byte> header, std::span<const std::byte> target,
             std::span<const std::byte> body)
        : parts_{header, target, body} {}

    std::span<const std::span<const std::byte>> rest() const {
        return std::span(parts_).subspan(first_);
    }

    bool done() const { return first_ == parts_.size(); }

    void sent(std::size_t count) {
        while (!done() && count >= parts_[first_].size()) {
            count -= parts_[first_].size();
            ++first_;
        }
        if (!done()) {
            parts_[first_] = parts_[first_].subspan(count);
        }
    }

  private:
    std::array<std::span<const std::byte>, Transport::kMostPieces> parts_;
    std::size_t first_ = 0;
};

}  // namespace

// Closes the connection at the end of a scope that did not say that it is in order.
class Connection::ClosedUnlessKept {
  public:
    explicit ClosedUnlessKept(Connection& connection) : connection_(connection) {}
    ClosedUnlessKept(const ClosedUnlessKept&) = delete;
    ClosedUnlessKept& operator=(const ClosedUnlessKept&) = delete;
    ~ClosedUnlessKept() {
        if (!kept_) {
            connection_.close();
        }
    }

    void keep() { kept_ = true; }

  private:
    Connection& connection_;
    bool kept_ = false;
};

Connection::Connection(std::unique_ptr<Transport> transport) : transport_(std::move(transport)) {}

void Connection::close() noexcept {
    transport_->disconnect();
    lastId_ = Wire::kGreetingId;
    read_ = filled_ = 0;
}

std::int32_t Connection::open(WideStringView argument) {
    if (bytesOf(argument) > Wire::kLargestGreeting) {
        return Status::kTextTooLong;
    }
    ClosedUnlessKept connection(*this);
    std::int32_t status = transport_->connect(transport_->now() + kConnectDeadline);
    if (status == Status::kSuccess) {
        status = greet(argument);
    }
    if (status == Status::kSuccess) {
        connection.keep();
    }
    return status;
}

std::int32_t Connection::greet(WideStringView argument) {
    Deadlines deadlines(transport_->now());
    FrameHeader hello;
    hello.type = FrameType::kHello;
    hello.id = Wire::kGreetingId;
    hello.bodyLength = bytesOf(argument);
    std::int32_t status = deliver(hello, {}, argument, deadlines);
    if (status != Status::kSuccess) {
        return status;
    }
    FrameHeader welcome;
    status = receiveAnswer(FrameType::kWelcome, hello.id, deadlines, welcome);
    lastId_ = hello.id;
    largestBody_ = welcome.code;
    return status;
}

std::int32_t Connection::execute(WideStringView target, std::uint32_t argument,
                                 WideStringView command, WideString& reply) {
    if (bytesOf(target) > Wire::kLargestTarget || bytesOf(command) > largestBody_) {
        return Status::kTextTooLong;
    }
    ClosedUnlessKept connection(*this);
    Deadlines deadlines(transport_->now());
    FrameHeader header;
    header.type = FrameType::kCommand;
    header.id = Wire::idAfter(lastId_);
    header.code = argument;
    header.targetLength = static_cast<std::uint32_t>(bytesOf(target));
    header.bodyLength = bytesOf(command);
    lastId_ = header.id;

    std::int32_t status = deliver(header, target, command, deadlines);
    if (status != Status::kSuccess) {
        return status;
    }
    FrameHeader answer;
    status = receiveAnswer(FrameType::kReply, header.id, deadlines, answer);
    if (status == Status::kSuccess) {
        status = receiveBody(answer.bodyLength, deadlines, reply);
    }
    if (status == Status::kSuccess || answer.type == FrameType::kError) {
        connection.keep();
    }
    return status;
}

std::int32_t Connection::deliver(const FrameHeader& header, WideStringView target,
                                 WideStringView body, Deadlines& deadlines) {
    const Wire::HeaderBytes head = Wire::encode(header);
    const Wire::OutgoingText targetText(target);
    const Wire::OutgoingText bodyText(body);
    Outgoing frame(head, targetText.bytes(), bodyText.bytes());
    while (!frame.done()) {
        const Transfer sent = transport_->send(frame.rest());
        if (sent.outcome == Outcome::kMoved) {
            frame.sent(sent.bytes);
            const TimePoint now = transport_->now();
            deadlines.bytesMoved(now);
            if (deadlines.passed(now)) {
                return Status::kTimeout;
            }
            continue;
        }
        Readiness ready;
        if (sent.outcome == Outcome::kNothingYet) {
            ready = transport_->wait(true, deadlines.next());
            if (!ready.toReceive && !ready.toSend) {
                return Status::kTimeout;
            }
        }
        if (ready.toReceive || sent.outcome == Outcome::kLost) {
            const std::int32_t heard = hearWhileSending(header.id);
            if (heard != Status::kSuccess) {
                return heard;
            }
        }
        if (sent.outcome == Outcome::kLost) {
            return Status::kConnectionLost;
        }
    }
    return Status::kSuccess;
}

// A server that will not take the rest of a frame says so at once, in an error frame; anything else
// would be out of turn. Success means that it has said nothing whole yet.
std::int32_t Connection::hearWhileSending(std::uint32_t id) {
    const Transfer heard = transport_->receive(roomInInbox());
    filled_ += heard.bytes;
    if (unread().size() < kHeaderSize) {
        return heard.outcome == Outcome::kLost ? Status::kConnectionLost : Status::kSuccess;
    }
    const std::optional<FrameHeader> header = Wire::decode(unread().data());
    if (!header || header->type != FrameType::kError || header->id != id) {
        return Status::kProtocolError;
    }
    return static_cast<std::int32_t>(header->code);
}

std::int32_t Connection::receiveAnswer(FrameType expected, std::uint32_t id, Deadlines& deadlines,
                                       FrameHeader& answer) {
    for (;;) {
        while (unread().size() < kHeaderSize) {
            std::size_t count = 0;
            const std::int32_t status = receiveSome(roomInInbox(), deadlines, count);
            if (status != Status::kSuccess) {
                return status;
            }
            filled_ += count;
        }
        const std::optional<FrameHeader> header = Wire::decode(unread().data());
        if (!header || header->id != id) {
            return Status::kProtocolError;
        }
        read_ += kHeaderSize;
        if (header->type == FrameType::kProgress) {
            deadlines.serverIsWorking(transport_->now());
            continue;
        }
        answer = *header;
        if (answer.type == FrameType::kError) {
            return static_cast<std::int32_t>(answer.code);
        }
        return answer.type == expected ? Status::kSuccess : Status::kProtocolError;
    }
}

std::int32_t Connection::receiveBody(std::uint64_t length, Deadlines& deadlines, WideString& body) {
    if (length > largestBody_) {
        return Status::kProtocolError;
    }
    Wire::IncomingText text(length);
    read_ += text.take(unread());
    while (!text.complete()) {
        std::size_t count = 0;
        const std::int32_t status = receiveSome(text.room(), deadlines, count);
        if (status != Status::kSuccess) {
            return status;
        }
        text.arrived(count);
    }
    body = std::move(text).finish();
    return Status::kSuccess;
}

// Waits until something came, and no longer than the deadlines allow.
std::int32_t Connection::receiveSome(std::span<std::byte> room, Deadlines& deadlines,
                                     std::size_t& count) {
    for (;;) {
        // An answer is seldom there at once, so the wait comes first.
        const Readiness ready = transport_->wait(false, deadlines.next());
        if (!ready.toReceive) {
            return Status::kTimeout;
        }
        const Transfer received = transport_->receive(room);
        if (received.outcome == Outcome::kLost) {
            return Status::kConnectionLost;
        }
        const TimePoint now = transport_->now();
        if (deadlines.passed(now)) {
            return Status::kTimeout;
        }
        if (received.outcome == Outcome::kMoved) {
            deadlines.bytesMoved(now);
            count = received.bytes;
            return Status::kSuccess;
        }
    }
}

std::span<const std::byte> Connection::unread() const {
    return std::span(inbox_).subspan(read_, filled_ - read_);
}

// Never empty while less than a header is unread, which is when more is wanted.
std::span<std::byte> Connection::roomInInbox() {
    std::copy(inbox_.begin() + static_cast<std::ptrdiff_t>(read_),
              inbox_.begin() + static_cast<std::ptrdiff_t>(filled_), inbox_.begin());
    filled_ -= read_;
    read_ = 0;
    return std::span(inbox_).subspan(filled_);
}

}  // namespace Orvel::Relay::Client
