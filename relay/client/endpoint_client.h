#ifndef ORVEL_CLIENT_ENDPOINT_CLIENT_H
#define ORVEL_CLIENT_ENDPOINT_CLIENT_H

#include <memory>

#include "orvel/relay/rpc_client.h"
#include "relay/client/connection.h"

namespace Orvel::Relay::Client {

/// The client over a transport: safe in any order of use, and without a trace in what the thread
/// remembers of its errors.
class EndpointClient final : public Core::RpcClient {
  public:
    explicit EndpointClient(std::unique_ptr<Transport> transport);
    ~EndpointClient() override;
    EndpointClient(const EndpointClient&) = delete;
    EndpointClient& operator=(const EndpointClient&) = delete;

    std::int32_t OpenConnection(WideString argument) override;
    std::int32_t ExecuteCommand(WideString target, std::uint32_t argument, WideString command,
                                WideString& reply) override;
    std::int32_t CloseConnection() override;

  private:
    Connection connection_;
};

}  // namespace Orvel::Relay::Client

#endif
