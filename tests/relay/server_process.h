#ifndef ORVEL_RELAY_SERVER_PROCESS_H
#define ORVEL_RELAY_SERVER_PROCESS_H

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <string>

namespace Orvel::Relay::Testing {

/// One connection, in a server's process. Every operation waits; none fails when the client has
/// gone.
class ServedConnection {
  public:
    /// Takes ownership of the descriptor of the connection, and borrows the one that leads to the
    /// test.
    ServedConnection(int connection, int test);
    ServedConnection(const ServedConnection&) = delete;
    ServedConnection& operator=(const ServedConnection&) = delete;
    ~ServedConnection();

    /// Receives that many bytes; fewer at the end of the connection.
    std::string receive(std::size_t bytes);
    /// Receives a frame.
    void receiveFrame();
    void send(const std::string& bytes);

    /// Receives the greeting and answers it.
    void welcome();

    /// Tells the test something, which `ServerProcess::hear` returns.
    void tell(char word);

  private:
    int connection_;
    int test_;
};

/// A server in a process of its own, which serves one connection after the other. For what a server
/// in the test's process cannot do: run as another user, or die.
class ServerProcess {
  public:
    using Serve = std::function<void(ServedConnection&)>;

    /// Listens when the constructor returns.
    /// @param user whom it runs as.
    /// @throws std::runtime_error when it cannot listen.
    ServerProcess(const std::string& path, uid_t user, const Serve& serve);
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;
    /// Kills it if it has not ended.
    ~ServerProcess();

    /// Waits until the server tells something.
    /// @return what it tells; 0 when it has died.
    char hear();

    pid_t id() const { return process_; }

  private:
    pid_t process_ = -1;
    int told_ = -1;
};

}  // namespace Orvel::Relay::Testing

#endif
