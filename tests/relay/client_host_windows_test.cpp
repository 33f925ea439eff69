#include <gtest/gtest.h>

#include <array>

#include "orvel/relay/rpc_client.h"
#include "relay/client/awaited_events_windows.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/scripted_server.h"

/// The thread that the client is called on.

namespace Orvel::Relay::Testing {
namespace {

using Client::Handle;

constexpr Client::TimePoint kOver{};

Handle makeEvent() { return Handle(::CreateEventW(nullptr, TRUE, FALSE, nullptr)); }

TEST(ClientHost, KeepsTheThreadsLastError) {
    constexpr DWORD kHosts = 4242;
    ScriptedServer server;
    server.welcome();
    WideString reply;
    const auto nobody = server.makeClient({server.pathBeside("nothing")});
    ::SetLastError(kHosts);
    EXPECT_EQ(nobody->OpenConnection(L""), Status::kServerUnavailable);
    EXPECT_EQ(::GetLastError(), kHosts);
    auto client = server.makeClient();
    ::SetLastError(kHosts);
    ASSERT_EQ(client->OpenConnection(L""), Status::kSuccess);
    EXPECT_EQ(::GetLastError(), kHosts);
    server.closeNow();
    ::SetLastError(kHosts);
    EXPECT_EQ(client->ExecuteCommand(L"TA", 0, L"x", reply), Status::kConnectionLost);
    EXPECT_EQ(::GetLastError(), kHosts);
    EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
    EXPECT_EQ(::GetLastError(), kHosts);
    server.welcome();
    ASSERT_EQ(client->OpenConnection(L""), Status::kSuccess);
    ::SetLastError(kHosts);
    client.reset();
    EXPECT_EQ(::GetLastError(), kHosts);
}

TEST(ClientHost, KeepsTheThreadsLastErrorWhenAClientIsMade) {
    constexpr DWORD kHosts = 4242;
    ::SetEnvironmentVariableW(L"ORVEL_RPC_DIRECTORY", nullptr);
    ::SetLastError(kHosts);
    const auto client = Client::Native::RpcClient::GetClientForEndpoint(L"Name");
    EXPECT_EQ(::GetLastError(), kHosts);
}

TEST(ClientHost, RunsNoneOfTheProceduresThatTheHostHasQueued) {
    ScriptedServer server;
    server.welcome().receiveFrame().send(replyFrame(1, L"reply"));
    server.receive(100'000);
    int run = 0;
    ASSERT_TRUE(::QueueUserAPC([](ULONG_PTR count) { ++*reinterpret_cast<int*>(count); },
                               ::GetCurrentThread(), reinterpret_cast<ULONG_PTR>(&run)));
    const auto client = server.makeClient();
    WideString reply;
    EXPECT_EQ(client->OpenConnection(L""), Status::kSuccess);
    EXPECT_EQ(client->ExecuteCommand(L"TA", 0, L"x", reply), Status::kSuccess);
    // This one is given up in mid-command.
    EXPECT_EQ(client->ExecuteCommand(L"TA", 0, WideString(4'000'000, L'x'), reply),
              Status::kTimeout);
    EXPECT_EQ(run, 0);
    ::SleepEx(0, TRUE);
    EXPECT_EQ(run, 1);
}

TEST(AwaitedEvents, AreOnlyLookedAtWhenTheTimeIsOver) {
    const Handle first = makeEvent();
    const Handle second = makeEvent();
    const std::array<HANDLE, 2> both{first.get(), second.get()};
    Client::AwaitedEvents awaited(both);
    EXPECT_FALSE(awaited.comesBefore(kOver));
    ::SetEvent(second.get());
    EXPECT_TRUE(awaited.comesBefore(kOver));
    ::ResetEvent(second.get());
    ::SetEvent(first.get());
    EXPECT_TRUE(awaited.comesBefore(kOver));
}

TEST(AwaitedEvents, EndAWaitAtOnceWhenTheyAreSet) {
    const Handle event = makeEvent();
    const std::array<HANDLE, 1> one{event.get()};
    ::SetEvent(event.get());
    Client::Waiter& waiter = Client::systemWaiter();
    Client::AwaitedEvents awaited(one);
    EXPECT_TRUE(waiter.wait(awaited, waiter.now() + std::chrono::hours(10'000)));
}

TEST(AwaitedEvents, ThatCannotBeWaitedForNeverCome) {
    const std::array<HANDLE, 1> none{nullptr};
    Client::AwaitedEvents awaited(none);
    Client::Waiter& waiter = Client::systemWaiter();
    EXPECT_FALSE(waiter.wait(awaited, waiter.now() + std::chrono::hours(10'000)));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
