#ifndef ORVEL_RELAY_CLIENT_CONVERSATION_H
#define ORVEL_RELAY_CLIENT_CONVERSATION_H

#include <gtest/gtest.h>

#include <memory>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/scripted_server.h"

namespace Orvel::Relay::Testing {

/// A client and the scripted server that it talks with.
class ClientConversation : public testing::Test {
  protected:
    void open() { ASSERT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess); }

    std::int32_t execute(const WideString& command = ORVEL_RELAY_TEXT("command")) {
        return client->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, command, reply);
    }

    // The connection is closed and the reply untouched, and the client can be opened again.
    void expectClosedAndUsableAgain() {
        EXPECT_EQ(reply, ORVEL_RELAY_TEXT("untouched"));
        EXPECT_EQ(execute(), Status::kConnectionLost);
        EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
        server.startOver();
        server.welcome().receiveFrame().send(replyFrame(1, ORVEL_RELAY_TEXT("again")));
        ASSERT_EQ(client->OpenConnection(ORVEL_RELAY_TEXT("")), Status::kSuccess);
        EXPECT_EQ(execute(), Status::kSuccess);
        EXPECT_EQ(reply, ORVEL_RELAY_TEXT("again"));
    }

    ScriptedServer server;
    std::unique_ptr<Client::EndpointClient> client = server.makeClient();
    WideString reply = ORVEL_RELAY_TEXT("untouched");
};

}  // namespace Orvel::Relay::Testing

#endif
