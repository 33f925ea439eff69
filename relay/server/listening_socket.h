#ifndef ORVEL_SERVER_LISTENING_SOCKET_H
#define ORVEL_SERVER_LISTENING_SOCKET_H

#include <filesystem>

#include "orvel/relay/server.h"
#include "relay/server/descriptor.h"

namespace Orvel::Relay::Server {

/// A Unix domain socket that listens, and the sole right to do so at its path.
class ListeningSocket {
  public:
    /// @param options for the file's mode and group.
    /// @throws std::system_error as the constructor of `Server` says.
    ListeningSocket(std::filesystem::path path, const Options& options);
    /// @throws std::system_error as the constructor of `Server` says.
    explicit ListeningSocket(HandedOverSocket socket);
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;
    /// Removes the socket's file, if it is its own.
    ~ListeningSocket();

    /// Hands the listening descriptor over; it does not block, and is closed in programs that this
    /// one executes. To be called once.
    int release() { return socket_.release(); }

    /// Where clients connect; empty when the socket has no file.
    const std::filesystem::path& path() const { return path_; }

    /// Whether somebody else listens there as well.
    bool isShared() const { return shared_; }

    /// Removes the socket's file, if it is its own, so that new clients find nobody. The right to
    /// listen stays.
    void removeFile() noexcept;

  private:
    void listenFor(const Options& options);

    std::filesystem::path path_;
    Descriptor lock_;
    Descriptor socket_;
    bool bound_ = false;
    const bool shared_ = false;
};

}  // namespace Orvel::Relay::Server

#endif
