#ifndef ORVEL_RELAY_RAW_CLIENT_H
#define ORVEL_RELAY_RAW_CLIENT_H

#include <string>

namespace Orvel::Relay::Testing {

/// A client without manners: it sends and receives bytes.
class RawClient {
  public:
    explicit RawClient(const std::string& path);
    ~RawClient();
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    /// Sends as much as the server takes. It may well have gone.
    void send(const std::string& bytes);

    /// Receives that many bytes; fewer at the end of the connection, or when the server is silent
    /// for longer than any test needs.
    std::string receive(std::size_t bytes);

    /// Receives until the end of the connection.
    std::string receiveRest();

    /// Receives until the end of the connection.
    /// @return false when the server stays silent instead, for longer than any test needs.
    bool waitForEnd();

    void close();

  private:
    int socket_ = -1;
};

}  // namespace Orvel::Relay::Testing

#endif
