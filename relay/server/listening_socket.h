#ifndef ORVEL_SERVER_LISTENING_SOCKET_H
#define ORVEL_SERVER_LISTENING_SOCKET_H

#include <cstdint>
#include <filesystem>

#include "relay/server/descriptor.h"

namespace Orvel::Relay::Server {

/// A Unix domain socket that listens, and the sole right to do so at its path.
class ListeningSocket {
  public:
    /// @throws std::system_error as the constructor of `Server` says.
    ListeningSocket(std::filesystem::path path, std::uint32_t mode);
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;
    /// Removes the socket's file.
    ~ListeningSocket();

    /// Hands the listening descriptor over; it does not block, and is closed in programs that this
    /// one executes. To be called once.
    int release() { return socket_.release(); }

    /// Removes the socket's file, so that new clients find nobody. The right to listen stays.
    void removeFile() noexcept;

  private:
    void listenAt(std::uint32_t mode);

    std::filesystem::path path_;
    Descriptor lock_;
    Descriptor socket_;
    bool bound_ = false;
};

}  // namespace Orvel::Relay::Server

#endif
