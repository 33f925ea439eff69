#include <gtest/gtest.h>

#include <cerrno>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/open_handles.h"
#include "tests/relay/scripted_server.h"

/// What the client leaves alone in the process that it lives in.

namespace Orvel::Relay::Testing {
namespace {

TEST(ClientHost, OpensNothingThatAnotherProgramWouldInherit) {
    ScriptedServer server;
    server.welcome();
    const auto client = server.makeClient();
    const std::set<std::uintptr_t> before = openHandles();
    ASSERT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
    std::size_t opened = 0;
    for (const std::uintptr_t handle : openHandles()) {
        if (!before.contains(handle)) {
            ++opened;
            EXPECT_FALSE(isInherited(handle)) << handle;
        }
    }
    // The server has opened something, too.
    EXPECT_GT(opened, handlesOfAConnection());
}

TEST(ClientHost, LeavesNothingOpen) {
    ScriptedServer server;
    const std::size_t before = openHandles().size();
    server.accept().receiveFrame().send("not a frame at all, but long enough to be one");
    server.close().welcome().receiveFrame().close();
    server.welcome().close();
    {
        const auto client = server.makeClient();
        EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kProtocolError);
        EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
        WideString reply;
        EXPECT_EQ(client->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, ORVEL_RELAY_TEXT("x"), reply),
                  Status::kConnectionLost);
        EXPECT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
    }
    server.closeNow();
    EXPECT_EQ(openHandles().size(), before);
}

TEST(ClientHost, KeepsTheHostsErrno) {
    constexpr int kHosts = 4242;
    ScriptedServer server;
    server.welcome();
    WideString reply;
    errno = kHosts;
    {
        const auto nobody = server.makeClient({server.pathBeside("nothing")});
        errno = kHosts;
        EXPECT_EQ(nobody->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kServerUnavailable);
        EXPECT_EQ(errno, kHosts);
        const auto client = server.makeClient();
        errno = kHosts;
        ASSERT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
        EXPECT_EQ(errno, kHosts);
        server.closeNow();
        errno = kHosts;
        EXPECT_EQ(client->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, ORVEL_RELAY_TEXT("x"), reply),
                  Status::kConnectionLost);
        EXPECT_EQ(errno, kHosts);
        EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
        EXPECT_EQ(errno, kHosts);
    }
}

TEST(SystemWaiter, PausesNoLongerWhenTheTimeIsOver) {
    Client::Waiter& waiter = Client::systemWaiter();
    waiter.pauseUntil(waiter.now() - std::chrono::hours(1));
    waiter.pauseUntil(waiter.now());
}

}  // namespace
}  // namespace Orvel::Relay::Testing
