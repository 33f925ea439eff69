#include "orvel/relay/rpc_client.h"

#include "relay/client/endpoint_client.h"
#include "relay/client/thread_error.h"
#include "relay/wire/endpoint.h"

namespace Orvel::Relay::Client::Native {

// Whatever may stand in this library's place takes the name by value, so it does too.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::shared_ptr<Core::RpcClient> RpcClient::GetClientForEndpoint(WideString endpoint) {
    const ThreadErrorKept kept;
    return std::make_shared<EndpointClient>(makeTransport(Wire::toEndpointName(endpoint)));
}

}  // namespace Orvel::Relay::Client::Native
