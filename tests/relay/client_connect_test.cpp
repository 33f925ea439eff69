#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/scripted_server.h"

/// How the client finds a server, and what it says when it finds none.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

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
    server.fillQueue();
    EXPECT_EQ(server.makeClient()->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(2));
}

TEST(ClientConnect, WaitsForRoomInAFullQueueOfConnections) {
    ScriptedServer server;
    const std::size_t waiting = server.fillQueue();
    ASSERT_GE(waiting, 1u);
    server.pause(milliseconds(500));
    for (std::size_t i = 0; i < waiting; ++i) {
        server.accept();
    }
    server.welcome();
    EXPECT_EQ(server.makeClient()->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
    EXPECT_GE(server.elapsed(), milliseconds(500));
    EXPECT_LT(server.elapsed(), seconds(1));
}

// It has connected when memory runs out.
class TransportWithoutMemory final : public Client::Transport {
  public:
    Client::TimePoint now() override { return {}; }
    std::int32_t connect(Client::TimePoint) override {
        connected_ = true;
        throw std::bad_alloc();
    }
    void disconnect() noexcept override { connected_ = false; }
    bool isConnected() const override { return connected_; }
    Client::Transfer send(std::span<const std::span<const std::byte>>) override { return {}; }
    Client::Transfer receive(std::span<std::byte>) override { return {}; }
    Client::Readiness wait(bool, Client::TimePoint) override { return {}; }

  private:
    bool connected_ = false;
};

TEST(ClientConnect, LeavesNothingOpenWhenMemoryRunsOut) {
    Client::EndpointClient client(std::make_unique<TransportWithoutMemory>());
    EXPECT_THROW(client.OpenConnection(ORVEL_RELAY_TEXT("")), std::bad_alloc);
    EXPECT_EQ(client.CloseConnection(), Status::kConnectionLost);
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
