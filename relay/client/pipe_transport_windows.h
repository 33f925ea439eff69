#ifndef ORVEL_CLIENT_PIPE_TRANSPORT_WINDOWS_H
#define ORVEL_CLIENT_PIPE_TRANSPORT_WINDOWS_H

#include "relay/client/path_transport.h"
#include "relay/client/pipe_operation_windows.h"

namespace Orvel::Relay::Client {

/// A named pipe. It is not inherited by programs that the host starts, and lets the server know
/// who the user is, but not act as the user.
///
/// Nothing waits inside the system: a read is kept under way into memory of the transport's own,
/// and what is sent is copied there before it is written. Bytes count as sent when they are copied,
/// as those count that are in a socket's buffer.
class PipeTransport final : public PathTransport {
  public:
    using PathTransport::PathTransport;
    ~PipeTransport() override;
    PipeTransport(const PipeTransport&) = delete;
    PipeTransport& operator=(const PipeTransport&) = delete;

    void disconnect() noexcept override;
    bool isConnected() const override;
    Transfer send(std::span<const std::span<const std::byte>> pieces) override;
    Transfer receive(std::span<std::byte> room) override;
    Readiness wait(bool sending, TimePoint until) override;

  private:
    std::optional<std::int32_t> tryToConnect(const std::string& path) override;
    bool canReceive();

    Handle pipe_;
    PipeOperation reading_;
    PipeOperation writing_;
    // Received and not yet handed on, in the memory of `reading_`.
    std::span<const std::byte> unread_;
};

}  // namespace Orvel::Relay::Client

#endif
