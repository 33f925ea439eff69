#ifndef ORVEL_CLIENT_SOCKET_TRANSPORT_POSIX_H
#define ORVEL_CLIENT_SOCKET_TRANSPORT_POSIX_H

#include "relay/client/path_transport.h"

namespace Orvel::Relay::Client {

/// A Unix domain socket. It is closed in programs that the host executes, and raises no SIGPIPE. A
/// server whom nobody has reason to trust is left before anything is sent to it.
class SocketTransport final : public PathTransport {
  public:
    using PathTransport::PathTransport;
    ~SocketTransport() override;
    SocketTransport(const SocketTransport&) = delete;
    SocketTransport& operator=(const SocketTransport&) = delete;

    void disconnect() noexcept override;
    bool isConnected() const override;
    Transfer send(std::span<const std::span<const std::byte>> pieces) override;
    Transfer receive(std::span<std::byte> room) override;
    Readiness wait(bool sending, TimePoint until) override;

  private:
    std::optional<std::int32_t> tryToConnect(const std::string& path) override;

    int socket_ = -1;
};

}  // namespace Orvel::Relay::Client

#endif
