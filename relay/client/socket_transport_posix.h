#ifndef ORVEL_CLIENT_SOCKET_TRANSPORT_POSIX_H
#define ORVEL_CLIENT_SOCKET_TRANSPORT_POSIX_H

#include <string>
#include <vector>

#include "relay/client/transport.h"
#include "relay/client/waiter_posix.h"

namespace Orvel::Relay::Client {

/// A Unix domain socket. It is closed in programs that the host executes, and raises no SIGPIPE.
class SocketTransport final : public Transport {
  public:
    /// @param paths of sockets, tried in this order as long as nobody listens there.
    /// @param waiter outlives the transport.
    SocketTransport(std::vector<std::string> paths, Waiter& waiter);
    ~SocketTransport() override;
    SocketTransport(const SocketTransport&) = delete;
    SocketTransport& operator=(const SocketTransport&) = delete;

    TimePoint now() override;
    std::int32_t connect(TimePoint until) override;
    void disconnect() noexcept override;
    bool isConnected() const override;
    Transfer send(std::span<const std::span<const std::byte>> pieces) override;
    Transfer receive(std::span<std::byte> room) override;
    Readiness wait(bool sending, TimePoint until) override;

  private:
    std::int32_t connectTo(const std::string& path, TimePoint until);

    std::vector<std::string> paths_;
    Waiter& waiter_;
    int socket_ = -1;
};

}  // namespace Orvel::Relay::Client

#endif
