#ifndef ORVEL_END_TO_END_PIPE_SERVICE_WINDOWS_H
#define ORVEL_END_TO_END_PIPE_SERVICE_WINDOWS_H

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "orvel/relay/text.h"

namespace Orvel::TestSupport {

/// A service behind a named pipe of its own, where the clients of this process find it. It serves
/// one connection after the other on a thread of its own, for as long as it lives.
class PipeService {
  public:
    /// @param answer gives the reply to a command; called on the service's thread.
    explicit PipeService(std::function<Relay::WideString(const Relay::WideString& command)> answer);
    PipeService(const PipeService&) = delete;
    PipeService& operator=(const PipeService&) = delete;
    ~PipeService();

    /// The commands of the connections that are over.
    const std::vector<Relay::WideString>& commands() const { return commands_; }

    /// Ends the service.
    void stop();

  private:
    void serve();
    void converse();
    bool receive(void* room, std::size_t size);
    void send(const std::string& bytes);

    std::function<Relay::WideString(const Relay::WideString&)> answer_;
    HANDLE pipe_;
    std::vector<Relay::WideString> commands_;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};

/// Makes the clients of this process look in a folder of pipes that no other process uses, or
/// nowhere else than there.
std::wstring pipeOfThisProcess();

}  // namespace Orvel::TestSupport

#endif
