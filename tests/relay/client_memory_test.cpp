#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "orvel/relay/rpc_client.h"
#include "relay/client/path_transport.h"
#include "tests/relay/failing_allocations.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/open_handles.h"
#include "tests/relay/scripted_server.h"

/// Memory that runs out at any allocation of the client.

namespace Orvel::Relay::Testing {
namespace {

// Lets the server's side allocate in peace.
class SparedServer final : public Client::Waiter {
  public:
    ScriptedServer script;

    Client::TimePoint now() override { return script.now(); }

    bool wait(Client::Awaited& awaited, Client::TimePoint until) override {
        const int left = std::exchange(allocationsLeft, -1);
        const bool came = script.wait(awaited, until);
        allocationsLeft = left;
        return came;
    }

    void pauseUntil(Client::TimePoint time) override { script.pauseUntil(time); }

    std::unique_ptr<Client::EndpointClient> makeClient() {
        return std::make_unique<Client::EndpointClient>(
            Client::makeTransport({script.path()}, *this));
    }
};

TEST(ClientMemory, RunningOutAtAnyAllocationClosesTheConnectionAndIsRaised) {
    const WideString text(100'000, ORVEL_RELAY_TEXT('x'));
    int raised = 0;
    bool succeeded = false;
    for (int n = 0; !succeeded; ++n) {
        ASSERT_LT(n, 100);
        SparedServer server;
        server.script.welcome().receiveFrame().send(replyFrame(1, text));
        const auto client = server.makeClient();
        ASSERT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
        WideString target = ORVEL_RELAY_TEXT("TA");
        WideString command = text;
        WideString reply = ORVEL_RELAY_TEXT("untouched");
        const std::size_t before = openHandles().size();
        allocationsLeft = n;
        try {
            EXPECT_EQ(client->ExecuteCommand(std::move(target), 0, std::move(command), reply),
                      Status::kSuccess);
            allocationsLeft = -1;
            EXPECT_EQ(reply, text);
            succeeded = true;
        } catch (const std::bad_alloc&) {
            ++raised;
            EXPECT_EQ(reply, ORVEL_RELAY_TEXT("untouched"));
            EXPECT_EQ(openHandles().size(), before - handlesOfAConnection());
            EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
        }
    }
    EXPECT_GE(raised, 2);
}

TEST(ClientMemory, AShortOperationAllocatesNothingButItsReply) {
    SparedServer server;
    server.script.welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("short")));
    const auto client = server.makeClient();
    WideString reply;
    allocationsLeft = 0;
    EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
    EXPECT_EQ(client->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, ORVEL_RELAY_TEXT("short"), reply),
              Status::kSuccess);
    EXPECT_EQ(allocationsLeft, 0);
    allocationsLeft = -1;
    EXPECT_EQ(reply, ORVEL_RELAY_TEXT("short"));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
