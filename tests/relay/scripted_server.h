#ifndef ORVEL_RELAY_SCRIPTED_SERVER_H
#define ORVEL_RELAY_SCRIPTED_SERVER_H

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "relay/client/endpoint_client.h"
#include "relay/client/transport.h"
#include "relay/client/waiter.h"
#include "relay/wire/frame.h"
#include "tests/relay/server_end.h"

namespace Orvel::Relay::Testing {

/// A server that does what a script says, over real connections but without threads or real time:
/// it takes its next step whenever the client would have to wait. When the script is at its end, or
/// at a pause, the client's time passes.
class ScriptedServer final : public Client::Waiter {
  public:
    ScriptedServer() = default;
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    // The steps, in the order in which they are added.
    ScriptedServer& accept();
    ScriptedServer& receive(std::size_t bytes);
    ScriptedServer& receiveFrame();
    ScriptedServer& send(std::string bytes);
    ScriptedServer& pause(std::chrono::milliseconds time);
    ScriptedServer& close();
    /// Does all steps added after this one over and over.
    ScriptedServer& forever();

    /// Accepts, receives the greeting and answers it.
    ScriptedServer& welcome(std::uint32_t largestBody = Wire::kLargestBody);

    /// Takes the steps that can be taken now, without a client that waits.
    void proceed();
    void closeNow() { end_.close(); }
    /// Closes the connection and forgets the rest of the script.
    void startOver();
    void stopListening() { end_.stopListening(); }

    /// Lets others connect until no more can.
    /// @return how many are connected and wait to be accepted.
    std::size_t fillQueue();

    /// A client of this server, or one that tries these paths.
    std::unique_ptr<Client::EndpointClient> makeClient();
    std::unique_ptr<Client::EndpointClient> makeClient(std::vector<std::string> paths);

    std::string path() const { return end_.path(); }
    /// Another path in the same folder; nobody listens there.
    std::string pathBeside(const std::string& name) const { return end_.pathBeside(name); }

    /// All that has been received.
    const std::string& received() const { return received_; }
    /// How much of the client's time has passed.
    std::chrono::milliseconds elapsed() const;
    /// Makes every look at the clock take some time.
    void slowClock(std::chrono::milliseconds time) { perLook_ = time; }

    // Client::Waiter
    Client::TimePoint now() override;
    bool wait(Client::Awaited& awaited, Client::TimePoint until) override;
    void pauseUntil(Client::TimePoint time) override;

  private:
    enum class Progress { kDone, kSome, kNone };
    using Step = std::function<Progress()>;

    ScriptedServer& add(Step step);
    Progress takeStep();
    Progress receiveUpTo(std::size_t& missing);
    bool proceedUntil(Client::TimePoint time);

    ServerEnd end_;
    std::deque<Step> steps_;
    bool repeats_ = false;
    std::string received_;
    std::vector<std::unique_ptr<Client::Transport>> queue_;
    Client::TimePoint start_{std::chrono::hours{1000}};
    Client::TimePoint now_ = start_;
    Client::TimePoint pauseEnd_{};
    std::chrono::milliseconds perLook_{0};
};

}  // namespace Orvel::Relay::Testing

#endif
