#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "relay/client/socket_transport_posix.h"
#include "tests/relay/failing_allocations.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/scripted_server.h"

/// Memory that runs out at any allocation of the client.

namespace Orvel::Relay::Testing {
namespace {

// Lets the server's side allocate in peace.
class SparedServer final : public Client::Waiter {
  public:
    ScriptedServer script;

    Client::TimePoint now() override { return script.now(); }

    short wait(int descriptor, short events, Client::TimePoint until) override {
        const int left = std::exchange(allocationsLeft, -1);
        const short ready = script.wait(descriptor, events, until);
        allocationsLeft = left;
        return ready;
    }

    std::unique_ptr<Client::EndpointClient> makeClient() {
        return std::make_unique<Client::EndpointClient>(
            std::make_unique<Client::SocketTransport>(std::vector{script.path()}, *this));
    }
};

long descriptorsOpen() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(ClientMemory, RunningOutAtAnyAllocationClosesTheConnectionAndIsRaised) {
    const WideString text(100'000, u'x');
    int raised = 0;
    bool succeeded = false;
    for (int n = 0; !succeeded; ++n) {
        ASSERT_LT(n, 100);
        SparedServer server;
        server.script.welcome().receiveFrame().send(replyFrame(1, text));
        const auto client = server.makeClient();
        ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
        WideString target = u"TA";
        WideString command = text;
        WideString reply = u"untouched";
        const long before = descriptorsOpen();
        allocationsLeft = n;
        try {
            EXPECT_EQ(client->ExecuteCommand(std::move(target), 0, std::move(command), reply),
                      Status::kSuccess);
            allocationsLeft = -1;
            EXPECT_EQ(reply, text);
            succeeded = true;
        } catch (const std::bad_alloc&) {
            ++raised;
            EXPECT_EQ(reply, u"untouched");
            EXPECT_EQ(descriptorsOpen(), before - 1);
            EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
        }
    }
    EXPECT_GE(raised, 2);
}

TEST(ClientMemory, AShortOperationAllocatesNothingButItsReply) {
    SparedServer server;
    server.script.welcome().receiveFrame().send(replyFrame(1, u"short"));
    const auto client = server.makeClient();
    WideString reply;
    allocationsLeft = 0;
    EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
    EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"short", reply), Status::kSuccess);
    EXPECT_EQ(allocationsLeft, 0);
    allocationsLeft = -1;
    EXPECT_EQ(reply, u"short");
}

}  // namespace
}  // namespace Orvel::Relay::Testing
