#include "orvel/relay/rpc_client.h"

#include <utility>

#include "relay/client/endpoint_client.h"
#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Client::Native {

std::shared_ptr<Core::RpcClient> RpcClient::GetClientForEndpoint(WideString endpoint) {
    return std::make_shared<EndpointClient>(makeTransport(Wire::toEndpointName(endpoint)));
}

}  // namespace Orvel::Relay::Client::Native
