#ifndef ORVEL_SERVICE_TESTS_CLIENT_H
#define ORVEL_SERVICE_TESTS_CLIENT_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "orvel/relay/rpc_client.h"
#include "wide.h"

namespace Orvel::Service {

/// One connection of an application to the service.
class Client {
  public:
    Client() { EXPECT_EQ(client_->OpenConnection({}), 0); }
    ~Client() { client_->CloseConnection(); }

    std::int32_t execute(const Relay::WideString& target, const Relay::WideString& command,
                         Relay::WideString& reply) {
        return client_->ExecuteCommand(target, 0, command, reply);
    }
    /// The reply, or what went wrong.
    Relay::WideString say(const std::string& command) {
        Relay::WideString reply;
        const auto status = execute(u"TA", wide(command), reply);
        return status == 0 ? reply : wide("status " + std::to_string(status));
    }

  private:
    std::shared_ptr<Relay::Client::Core::RpcClient> client_ =
        Relay::Client::Native::RpcClient::GetClientForEndpoint(u"OrvelAnalyticsRpcEndpoint");
};

}  // namespace Orvel::Service

#endif
