#ifndef ORVEL_CLIENT_CONNECTION_H
#define ORVEL_CLIENT_CONNECTION_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "orvel/relay/text.h"
#include "relay/client/transport.h"
#include "relay/wire/frame.h"
#include "relay/wire/wire_text.h"

namespace Orvel::Relay::Client {

/// The conversation with a server: greeting, then commands one after the other. Whatever leaves the
/// two sides out of step closes the connection, exceptions included.
class Connection {
  public:
    explicit Connection(std::unique_ptr<Transport> transport);

    bool isOpen() const { return transport_->isConnected(); }

    /// Connects and greets; nothing is open before.
    std::int32_t open(WideStringView argument);

    /// One command and its reply; `reply` is written on success only.
    std::int32_t execute(WideStringView target, std::uint32_t argument, WideStringView command,
                         WideString& reply);

    void close() noexcept;

  private:
    class ClosedUnlessKept;

    std::int32_t greet(WideStringView argument);
    std::int32_t deliver(const Wire::FrameHeader& header, WideStringView target,
                         WideStringView body, Deadlines& deadlines);
    std::int32_t hearWhileSending(std::uint32_t id);
    std::int32_t receiveAnswer(Wire::FrameType expected, std::uint32_t id, Deadlines& deadlines,
                               Wire::FrameHeader& answer);
    std::int32_t receiveBody(std::uint64_t length, Deadlines& deadlines, WideString& body);
    std::int32_t receiveSome(std::span<std::byte> room, Deadlines& deadlines, std::size_t& count);

    std::span<const std::byte> unread() const;
    std::span<std::byte> roomInInbox();

    std::unique_ptr<Transport> transport_;
    std::uint32_t lastId_ = Wire::kGreetingId;
    std::uint32_t largestBody_ = 0;

    // Received and not yet understood. It holds a short answer whole, header included.
    std::array<std::byte, 4096> inbox_;
    std::size_t read_ = 0;
    std::size_t filled_ = 0;
};

}  // namespace Orvel::Relay::Client

#endif
