#ifndef ORVEL_CLIENT_TRANSPORT_H
#define ORVEL_CLIENT_TRANSPORT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "relay/client/deadlines.h"

/// @file
/// Bytes to and from the server of an endpoint: the seam behind which each platform has its own
/// kind of connection.

namespace Orvel::Relay::Client {

/// What became of an attempt to move bytes without waiting.
enum class Outcome {
    kMoved,       ///< at least one byte
    kNothingYet,  ///< it takes a wait
    kLost,        ///< the connection is over
};

struct Transfer {
    Outcome outcome = Outcome::kLost;
    std::size_t bytes = 0;
};

/// What can be done after a wait; neither when time ran out.
struct Readiness {
    bool toReceive = false;
    bool toSend = false;
};

/// At most one connection. Statuses are those of `Orvel::Relay::Status`. The destructor
/// disconnects.
class Transport {
  public:
    virtual ~Transport() = default;

    /// The time that deadlines are counted in; it never goes back.
    virtual TimePoint now() = 0;

    /// Connects; nothing is connected before. After a failure nothing is.
    virtual std::int32_t connect(TimePoint until) = 0;

    virtual void disconnect() noexcept = 0;
    virtual bool isConnected() const = 0;

    /// Sends as much of the pieces, one after the other, as goes without waiting.
    /// @param pieces at most `kMostPieces`, not all of them empty.
    virtual Transfer send(std::span<const std::span<const std::byte>> pieces) = 0;
    static constexpr std::size_t kMostPieces = 3;

    /// Receives what is there, as far as there is room for it; the room is not empty.
    virtual Transfer receive(std::span<std::byte> room) = 0;

    /// Waits until something can be received (the end of the connection counts as such), or, if
    /// `sending`, sent.
    virtual Readiness wait(bool sending, TimePoint until) = 0;
};

/// The transport of this platform.
/// @param endpoint an endpoint's name, or an empty text for one at which no server is found.
std::unique_ptr<Transport> makeTransport(const std::string& endpoint);

}  // namespace Orvel::Relay::Client

#endif
