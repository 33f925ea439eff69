#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "relay/client/path_transport.h"
#include "tests/relay/scripted_server.h"

/// How the client finds a server, and what it says when it finds none.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Connects as long as the queue of `path` has room.
class FullQueue {
  public:
    explicit FullQueue(const std::string& path) {
        constexpr Client::TimePoint kAtOnce{};
        std::int32_t status = Status::kSuccess;
        while (status == Status::kSuccess) {
            transports_.push_back(Client::makeTransport({path}, Client::systemWaiter()));
            status = transports_.back()->connect(kAtOnce);
        }
        EXPECT_EQ(status, Status::kTimeout);
    }

    // Of connections that a server has not taken yet.
    std::size_t size() const { return transports_.size() - 1; }

  private:
    std::vector<std::unique_ptr<Client::Transport>> transports_;
};

TEST(ClientConnect, FindsNoServerWhereNothingIs) {
    ScriptedServer server;
    EXPECT_EQ(
        server.makeClient({server.pathBeside("nothing")})->OpenConnection(ORVEL_RELAY_TEXT("")),
        Status::kServerUnavailable);
    EXPECT_EQ(server.makeClient({server.pathBeside("no-folder/a.sock")})
                  ->OpenConnection(ORVEL_RELAY_TEXT("")),
              Status::kServerUnavailable);
    EXPECT_EQ(server.makeClient(std::vector<std::string>())->OpenConnection(ORVEL_RELAY_TEXT("")),
              Status::kServerUnavailable);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
}

TEST(ClientConnect, FindsNoServerWhereNobodyListens) {
    ScriptedServer server;
    server.stopListening();
    EXPECT_EQ(server.makeClient()->OpenConnection(ORVEL_RELAY_TEXT("")),
              Status::kServerUnavailable);
}

TEST(ClientConnect, GoesOnWhereNothingIsOrNobodyListens) {
    ScriptedServer server;
    ScriptedServer dead;
    dead.stopListening();
    server.welcome();
    const auto client =
        server.makeClient({server.pathBeside("nothing"), dead.path(), server.path()});
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
}

TEST(ClientConnect, GoesNoFurtherThanTheFirstServer) {
    ScriptedServer first;
    ScriptedServer second;
    first.welcome();
    EXPECT_EQ(first.makeClient({first.path(), second.path()})->OpenConnection(ORVEL_RELAY_TEXT("")),
              Status::kSuccess);
    second.accept();
    second.proceed();
    EXPECT_EQ(second.received(), "");
}

TEST(ClientConnect, GivesUpAFullQueueOfConnectionsAfterTwoSeconds) {
    ScriptedServer server;
    const FullQueue queue(server.path());
    EXPECT_EQ(server.makeClient()->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(2));
}

TEST(ClientConnect, WaitsForRoomInAFullQueueOfConnections) {
    ScriptedServer server;
    const FullQueue queue(server.path());
    ASSERT_GE(queue.size(), 1u);
    server.pause(milliseconds(500));
    for (std::size_t i = 0; i < queue.size(); ++i) {
        server.accept();
    }
    server.welcome();
    EXPECT_EQ(server.makeClient()->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
    EXPECT_GE(server.elapsed(), milliseconds(500));
    EXPECT_LT(server.elapsed(), seconds(1));
}

TEST(ClientConnect, AnEndpointWithAMalformedNameHasNoServer) {
    for (const WideString& name :
         {WideString(ORVEL_RELAY_TEXT("")), WideString(ORVEL_RELAY_TEXT("..")),
          WideString(ORVEL_RELAY_TEXT("a/b")), WideString(65, ORVEL_RELAY_TEXT('x')),
          WideString(ORVEL_RELAY_TEXT("\xD800"))}) {
        const auto client = Client::Native::RpcClient::GetClientForEndpoint(name);
        ASSERT_NE(client, nullptr);
        EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kServerUnavailable);
    }
}

}  // namespace
}  // namespace Orvel::Relay::Testing
