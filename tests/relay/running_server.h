#ifndef ORVEL_RELAY_RUNNING_SERVER_H
#define ORVEL_RELAY_RUNNING_SERVER_H

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "orvel/relay/server.h"
#include "relay/client/endpoint_client.h"
#include "relay/client/path_transport.h"
#include "tests/relay/temporary_folder.h"

namespace Orvel::Relay::Testing {

using Execute =
    std::function<Server::Answer(const WideString& target, std::uint32_t argument, WideString)>;

/// A conversation made of a function, which says when it ends.
class FunctionConversation final : public Server::Conversation {
  public:
    explicit FunctionConversation(
        Execute execute, std::function<void()> ended = [] {})
        : execute_(std::move(execute)), ended_(std::move(ended)) {}
    FunctionConversation(const FunctionConversation&) = delete;
    FunctionConversation& operator=(const FunctionConversation&) = delete;
    ~FunctionConversation() override { ended_(); }

    Server::Answer execute(const WideString& target, std::uint32_t argument,
                           WideString command) override {
        return execute_(target, argument, std::move(command));
    }

  private:
    Execute execute_;
    std::function<void()> ended_;
};

inline Server::Answer echo(const WideString&, std::uint32_t, WideString command) {
    return {0, std::move(command)};
}

/// A factory of conversations that all do the same.
inline Server::ConversationFactory always(const Execute& execute) {
    return
        [execute](const Server::Peer&) { return std::make_unique<FunctionConversation>(execute); };
}

/// A server that runs on a thread of its own until the end of the test.
class RunningServer {
  public:
    explicit RunningServer(Server::ConversationFactory factory = always(echo),
                           const Server::Options& options = {})
        : server_(path(), std::move(factory), options), thread_([this] { server_.run(); }) {}
    RunningServer(const RunningServer&) = delete;
    RunningServer& operator=(const RunningServer&) = delete;
    ~RunningServer() { finish(); }

    void stop() { server_.stop(); }

    /// Stops, and waits until the server has ended.
    void finish() {
        if (thread_.joinable()) {
            stop();
            thread_.join();
        }
    }

    /// Waits until the server has ended by itself.
    void join() { thread_.join(); }

    std::string path() const { return folder_.file("running.sock"); }
    const TemporaryFolder& folder() const { return folder_; }

    /// A client with real time.
    std::unique_ptr<Client::EndpointClient> makeClient() const {
        return std::make_unique<Client::EndpointClient>(
            Client::makeTransport({path()}, Client::systemWaiter()));
    }

  private:
    TemporaryFolder folder_;
    Server::Server server_;
    std::thread thread_;
};

}  // namespace Orvel::Relay::Testing

#endif
