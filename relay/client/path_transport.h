#ifndef ORVEL_CLIENT_PATH_TRANSPORT_H
#define ORVEL_CLIENT_PATH_TRANSPORT_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "relay/client/transport.h"
#include "relay/client/waiter.h"

namespace Orvel::Relay::Client {

/// What the transports of all platforms have in common: servers are looked for at paths, and one
/// whose queue of connections is full is asked again.
class PathTransport : public Transport {
  public:
    /// @param paths tried in this order as long as nobody listens there.
    /// @param waiter outlives the transport.
    PathTransport(std::vector<std::string> paths, Waiter& waiter);

    TimePoint now() final;
    std::int32_t connect(TimePoint until) final;

  protected:
    /// Connects without waiting.
    /// @return a status, or nothing when there is no room in the server's queue. Nothing is
    ///     connected then, nor after a failure.
    virtual std::optional<std::int32_t> tryToConnect(const std::string& path) = 0;

    Waiter& waiter() const { return waiter_; }

  private:
    std::int32_t connectTo(const std::string& path, TimePoint until);

    std::vector<std::string> paths_;
    Waiter& waiter_;
};

/// The transport of this platform, to a server at one of these paths.
std::unique_ptr<Transport> makeTransport(std::vector<std::string> paths, Waiter& waiter);

}  // namespace Orvel::Relay::Client

#endif
