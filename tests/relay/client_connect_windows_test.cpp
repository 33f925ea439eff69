#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "orvel/relay/rpc_client.h"
#include "relay/client/handle_windows.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/scripted_server.h"

/// What a pipe's name and its rights do to the client's connecting.

namespace Orvel::Relay::Testing {
namespace {

using Client::Handle;

Handle makePipe(const std::string& path, DWORD access) {
    return Client::ownedHandle(::CreateNamedPipeA(
        path.c_str(), access | FILE_FLAG_FIRST_PIPE_INSTANCE | FILE_FLAG_OVERLAPPED,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 4096, 4096, 0, nullptr));
}

// A name with as many characters as it takes.
std::string pathOfLength(const ScriptedServer& server, std::size_t length) {
    const std::string start = server.pathBeside("");
    return start + std::string(length - start.size(), 'x');
}

TEST(ClientConnectToPipe, ReportsARefusalAndDoesNotLookFurther) {
    ScriptedServer server;
    server.welcome();
    // The system refuses clients that would read, too.
    const std::string path = server.pathBeside("refusing");
    const Handle refusing = makePipe(path, PIPE_ACCESS_INBOUND);
    ASSERT_NE(refusing, nullptr);
    EXPECT_EQ(server.makeClient({path, server.path()})->OpenConnection(L""), Status::kAccessDenied);
    EXPECT_EQ(server.elapsed(), std::chrono::milliseconds(0));
}

TEST(ClientConnectToPipe, FindsTheLongestNameAndNoServerBehindALongerOne) {
    constexpr std::size_t kLongest = 256;
    ScriptedServer server;
    const Handle longest = makePipe(pathOfLength(server, kLongest), PIPE_ACCESS_DUPLEX);
    ASSERT_NE(longest, nullptr);
    // It does not greet.
    EXPECT_EQ(server.makeClient({pathOfLength(server, kLongest)})->OpenConnection(L""),
              Status::kTimeout);
    for (const std::size_t length : {kLongest + 1, std::size_t{100'000}}) {
        EXPECT_EQ(server.makeClient({pathOfLength(server, length)})->OpenConnection(L""),
                  Status::kServerUnavailable);
    }
}

TEST(ClientConnectToPipe, NoEndpointsNameLeadsToAnotherMachine) {
    for (const WideString name : {L"\\\\machine\\pipe\\orvel\\a", L"..\\..\\UNC\\machine\\pipe\\a",
                                  L"..", L"a\\b", L"a/b", L"\\a"}) {
        const auto client = Client::Native::RpcClient::GetClientForEndpoint(name);
        EXPECT_EQ(client->OpenConnection(L""), Status::kServerUnavailable) << name;
    }
}

TEST(ClientConnectToPipe, FindsTheServerOfAnEndpointInTheChosenFolder) {
    ScriptedServer server;
    const std::string path = server.path();
    const std::size_t name = path.rfind('\\') + 1;
    const std::size_t folder = path.rfind('\\', name - 2) + 1;
    const std::string endpoint = path.substr(name);
    const std::string chosen = path.substr(folder, name - 1 - folder);
    ::SetEnvironmentVariableA("ORVEL_RPC_DIRECTORY", chosen.c_str());
    const auto client =
        Client::Native::RpcClient::GetClientForEndpoint({endpoint.begin(), endpoint.end()});
    const auto stranger = Client::Native::RpcClient::GetClientForEndpoint(L"stranger");
    ::SetEnvironmentVariableA("ORVEL_RPC_DIRECTORY", nullptr);
    EXPECT_EQ(stranger->OpenConnection(L""), Status::kServerUnavailable);

    // This client waits in real time, and the server meanwhile.
    server.welcome().receiveFrame().send(replyFrame(1, L"met"));
    std::atomic<bool> done = false;
    WideString reply;
    std::thread conversing([&] {
        EXPECT_EQ(client->OpenConnection(L""), Status::kSuccess);
        EXPECT_EQ(client->ExecuteCommand(L"TA", 0, L"", reply), Status::kSuccess);
        done = true;
    });
    while (!done) {
        server.proceed();
        std::this_thread::yield();
    }
    conversing.join();
    EXPECT_EQ(reply, L"met");
}

}  // namespace
}  // namespace Orvel::Relay::Testing
