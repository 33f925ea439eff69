#include "tests/relay/client_faults.h"

#include <gtest/gtest.h>

#include "orvel/relay/rpc_client.h"
#include "support/fault_tally.h"
#include "tests/relay/frame_bytes.h"

/// Every fault of a server: its status, what it costs, and what it leaves behind.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;

constexpr WideStringView kText = ORVEL_RELAY_TEXT("text");

bool areEqual(const auto& seen, const auto& expected) {
    EXPECT_EQ(seen, expected);
    return seen == expected;
}

/// A client, and a server with a fault.
class FaultyConversation {
  public:
    bool failsToConnect(const ConnectFault& fault) {
        client_ = server_.makeClient(fault.inject(server_));
        return areEqual(open(), fault.status) && areEqual(server_.elapsed(), fault.cost) &&
               isClosed();
    }

    bool failsToOpen(const AnswerFault& fault) {
        server_.accept().receiveFrame();
        fault.inject(server_, {0, welcomeFrame()});
        return areEqual(open(), fault.status) && areEqual(server_.elapsed(), fault.cost) &&
               isClosed() && isUsableAgain();
    }

    bool failsToExecute(const AnswerFault& fault) {
        server_.welcome().receiveFrame();
        fault.inject(server_, {1, replyFrame(1, kText)});
        return areEqual(open(), Status::kSuccess) && areEqual(execute(), fault.status) &&
               areEqual(server_.elapsed(), fault.cost) &&
               areEqual(reply_, ORVEL_RELAY_TEXT("untouched")) && isUsableAgain();
    }

  private:
    std::int32_t open() { return client_->OpenConnection(ORVEL_RELAY_TEXT("")); }

    std::int32_t execute() {
        return client_->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, ORVEL_RELAY_TEXT("command"),
                                       reply_);
    }

    bool isClosed() {
        return areEqual(execute(), Status::kConnectionLost) &&
               areEqual(client_->CloseConnection(), Status::kConnectionLost);
    }

    bool isUsableAgain() {
        server_.startOver();
        server_.welcome().receiveFrame().send(replyFrame(1, kText));
        return areEqual(open(), Status::kSuccess) && areEqual(execute(), Status::kSuccess) &&
               areEqual(reply_, kText);
    }

    ScriptedServer server_;
    std::unique_ptr<Client::EndpointClient> client_ = server_.makeClient();
    WideString reply_ = ORVEL_RELAY_TEXT("untouched");
};

TEST(ClientFaults, EachGivesItsStatusInItsTimeAndLeavesAClientThatCanBeUsed) {
    Support::FaultTally tally("relay client");
    for (const ConnectFault& fault : connectFaults()) {
        tally.injected(fault.name);
        tally.observed(fault.name, FaultyConversation().failsToConnect(fault));
    }
    for (const AnswerFault& fault : greetingFaults()) {
        tally.injected(fault.name);
        tally.observed(fault.name, FaultyConversation().failsToOpen(fault));
    }
    for (const AnswerFault& fault : replyFaults()) {
        tally.injected(fault.name);
        tally.observed(fault.name, FaultyConversation().failsToExecute(fault));
    }
    tally.report();
}

}  // namespace
}  // namespace Orvel::Relay::Testing
