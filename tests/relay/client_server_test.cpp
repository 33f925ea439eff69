#include <gtest/gtest.h>
#include <stdlib.h>

#include <thread>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/running_server.h"

/// Client and server together.

namespace Orvel::Relay::Testing {
namespace {

WideString everyCodeUnit() {
    WideString text;
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        text.push_back(static_cast<WideChar>(unit));
    }
    return text;
}

TEST(ClientAndServer, AnyTextPassesUnchangedBothWays) {
    RunningServer server;
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    const std::vector<WideString> texts = {
        u"",
        u"plain",
        WideString(u"\0", 1),
        WideString(u"a\0b\0", 4),
        u"\xD800",
        u"\xDFFF\xD800",
        u"\u65E5\u672C\u8A9E \U0001F600",
        everyCodeUnit(),
        WideString(3'000'000, u'\u65E5'),
    };
    for (const WideString& text : texts) {
        WideString reply = u"before";
        ASSERT_EQ(client->ExecuteCommand(u"TA", 0, text, reply), Status::kSuccess);
        EXPECT_TRUE(reply == text) << "a text of " << text.size() << " code units";
    }
}

TEST(ClientAndServer, TargetAndArgumentArriveAsTheyWere) {
    WideString target;
    std::uint32_t argument = 0;
    RunningServer server(always([&](const WideString& to, std::uint32_t with, const WideString&) {
        target = to;
        argument = with;
        return Server::Answer();
    }));
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    WideString reply;
    const WideString longest(4096, u'\xD812');
    ASSERT_EQ(client->ExecuteCommand(longest, 0xFEDCBA98, u"x", reply), Status::kSuccess);
    EXPECT_EQ(target, longest);
    EXPECT_EQ(argument, 0xFEDCBA98);
    ASSERT_EQ(client->ExecuteCommand(WideString(u"\0TA", 3), 0, u"x", reply), Status::kSuccess);
    EXPECT_EQ(target, WideString(u"\0TA", 3));
    EXPECT_EQ(argument, 0u);
}

TEST(ClientAndServer, TheLargestCommandPassesAndALongerOneIsRefusedByTheClient) {
    Server::Options options;
    options.largestBody = 2'000'000;
    RunningServer server(always(echo), options);
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    WideString reply;
    EXPECT_EQ(client->ExecuteCommand(u"TA", 0, WideString(1'000'001, u'x'), reply),
              Status::kTextTooLong);
    EXPECT_EQ(client->ExecuteCommand(u"TA", 0, WideString(1'000'000, u'x'), reply),
              Status::kSuccess);
    EXPECT_EQ(reply.size(), 1'000'000u);
}

TEST(ClientAndServer, ManyConnectionsTalkAtTheSameTime) {
    constexpr int kThreads = 8;
    constexpr int kConnections = 30;
    RunningServer server;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&server, thread] {
            for (int connection = 0; connection < kConnections; ++connection) {
                const auto client = server.makeClient();
                ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
                for (int command = 0; command < 5; ++command) {
                    const WideString text(static_cast<std::size_t>(command * 20'000 + connection),
                                          static_cast<WideChar>(u'A' + thread));
                    WideString reply;
                    ASSERT_EQ(client->ExecuteCommand(u"TA", 0, text, reply), Status::kSuccess);
                    ASSERT_TRUE(reply == text);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ClientAndServer, HundredsOfIdleConnectionsDoNotHinderAnother) {
    Server::Options options;
    options.connections = 400;
    RunningServer server(always(echo), options);
    std::vector<std::unique_ptr<Client::EndpointClient>> idle;
    for (int i = 0; i < 399; ++i) {
        idle.push_back(server.makeClient());
        ASSERT_EQ(idle.back()->OpenConnection(u""), Status::kSuccess);
    }
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    WideString reply;
    EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"x", reply), Status::kSuccess);
    EXPECT_EQ(idle.front()->ExecuteCommand(u"TA", 0, u"y", reply), Status::kSuccess);
}

TEST(ClientAndServer, AServerThatIsStartedAgainIsFoundAgain) {
    const TemporaryFolder folder;
    const auto client = std::make_unique<Client::EndpointClient>(
        Client::makeTransport({folder.file("a.sock")}, Client::systemWaiter()));
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(client->OpenConnection(u""), Status::kServerUnavailable);
        Server::Server server(folder.file("a.sock"), always(echo));
        std::thread thread([&] { server.run(); });
        EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
        server.stop();
        thread.join();
        WideString reply;
        EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"x", reply), Status::kConnectionLost);
    }
}

TEST(ClientAndServer, MeetAtTheEndpointThatBothAreGiven) {
    const TemporaryFolder folder;
    ASSERT_EQ(::setenv("ORVEL_RPC_DIRECTORY", folder.path().c_str(), 1), 0);
    Server::Server server(Server::endpointSocket("Some.Endpoint-1"), always(echo));
    const auto client = Client::Native::RpcClient::GetClientForEndpoint(u"Some.Endpoint-1");
    const auto stranger = Client::Native::RpcClient::GetClientForEndpoint(u"Some.Endpoint-2");
    ASSERT_EQ(::unsetenv("ORVEL_RPC_DIRECTORY"), 0);
    std::thread thread([&] { server.run(); });
    WideString reply;
    EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
    EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"met", reply), Status::kSuccess);
    EXPECT_EQ(reply, u"met");
    EXPECT_EQ(stranger->OpenConnection(u""), Status::kServerUnavailable);
    server.stop();
    thread.join();
}

}  // namespace
}  // namespace Orvel::Relay::Testing
