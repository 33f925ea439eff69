#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "orvel/relay/rpc_client.h"
#include "relay/client/endpoint_client.h"
#include "relay/client/path_transport.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/server_process.h"
#include "tests/relay/temporary_folder.h"

/// A server's process that is killed: nobody says goodbye, and its socket stays.

namespace Orvel::Relay::Testing {
namespace {

// What a client's one command gives, from a server that does this and dies.
class KilledServer : public testing::Test {
  protected:
    std::int32_t statusOfCommand(const ServerProcess::Serve& lastDeeds) {
        ServerProcess server(path, ::geteuid(), [&](ServedConnection& connection) {
            connection.welcome();
            lastDeeds(connection);
            ::raise(SIGKILL);
        });
        EXPECT_EQ(client.OpenConnection(u""), Status::kSuccess);
        const std::int32_t status =
            client.ExecuteCommand(u"TA", 0, WideString(4'000'000, u'x'), reply);
        EXPECT_EQ(server.hear(), '\0') << "it has died";
        return status;
    }

    void expectClosedAndNobodyThere() {
        EXPECT_EQ(reply, u"untouched");
        EXPECT_EQ(client.CloseConnection(), Status::kConnectionLost);
        EXPECT_EQ(client.OpenConnection(u""), Status::kServerUnavailable);
    }

    const TemporaryFolder folder;
    const std::string path = folder.file("a.sock");
    Client::EndpointClient client{Client::makeTransport({path}, Client::systemWaiter())};
    WideString reply = u"untouched";
};

TEST_F(KilledServer, BeforeTheCommandIsAConnectionLost) {
    EXPECT_EQ(statusOfCommand([](ServedConnection&) {}), Status::kConnectionLost);
    expectClosedAndNobodyThere();
}

TEST_F(KilledServer, InMidCommandIsAConnectionLost) {
    EXPECT_EQ(statusOfCommand([](ServedConnection& connection) { connection.receive(1'000'000); }),
              Status::kConnectionLost);
    expectClosedAndNobodyThere();
}

TEST_F(KilledServer, WhileItExecutesTheCommandIsAConnectionLost) {
    EXPECT_EQ(statusOfCommand([](ServedConnection& connection) {
                  connection.receiveFrame();
                  connection.send(progressFrame(1));
              }),
              Status::kConnectionLost);
    expectClosedAndNobodyThere();
}

TEST_F(KilledServer, InMidReplyIsAConnectionLost) {
    EXPECT_EQ(statusOfCommand([](ServedConnection& connection) {
                  connection.receiveFrame();
                  const std::string whole = replyFrame(1, u"never to be finished");
                  connection.send(whole.substr(0, whole.size() - 1));
              }),
              Status::kConnectionLost);
    expectClosedAndNobodyThere();
}

TEST_F(KilledServer, BeforeTheGreetingIsAConnectionLost) {
    ServerProcess server(path, ::geteuid(), [](ServedConnection&) { ::raise(SIGKILL); });
    EXPECT_EQ(client.OpenConnection(u""), Status::kConnectionLost);
    EXPECT_EQ(client.CloseConnection(), Status::kConnectionLost);
}

}  // namespace
}  // namespace Orvel::Relay::Testing
