#ifndef ORVEL_RELAY_SERVER_END_H
#define ORVEL_RELAY_SERVER_END_H

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Orvel::Relay::Testing {

/// A server's end of one connection at a time, at a path of its own. Nothing waits.
class ServerEnd {
  public:
    /// Listens.
    ServerEnd();
    ~ServerEnd();
    ServerEnd(const ServerEnd&) = delete;
    ServerEnd& operator=(const ServerEnd&) = delete;

    std::string path() const;
    /// Another path in the same folder; nobody listens there.
    std::string pathBeside(const std::string& name) const;

    /// Takes a connection in place of the one before.
    /// @return false when none is waiting.
    bool accept();

    /// @return how many bytes came; 0 when none is there, nor will be.
    std::size_t receive(std::span<char> room);

    /// Sends. To be called with the same bytes again, without those that were taken.
    /// @return how many bytes were taken; nothing as long as it makes no sense to ask again before
    ///     the client has received.
    std::optional<std::size_t> send(std::string_view bytes);

    /// Closes the connection. What was taken still arrives.
    void close();
    void stopListening();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace Orvel::Relay::Testing

#endif
