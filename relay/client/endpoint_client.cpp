#include "relay/client/endpoint_client.h"

#include <utility>

#include "relay/client/thread_error.h"

namespace Orvel::Relay::Client {

EndpointClient::EndpointClient(std::unique_ptr<Transport> transport)
    : connection_(std::move(transport)) {}

EndpointClient::~EndpointClient() {
    const ThreadErrorKept kept;
    connection_.close();
}

std::int32_t EndpointClient::OpenConnection(WideString argument) {
    const ThreadErrorKept kept;
    connection_.close();
    return connection_.open(argument);
}

std::int32_t EndpointClient::ExecuteCommand(WideString target, std::uint32_t argument,
                                            WideString command, WideString& reply) {
    const ThreadErrorKept kept;
    if (!connection_.isOpen()) {
        return Status::kConnectionLost;
    }
    return connection_.execute(target, argument, command, reply);
}

std::int32_t EndpointClient::CloseConnection() {
    const ThreadErrorKept kept;
    if (!connection_.isOpen()) {
        return Status::kConnectionLost;
    }
    connection_.close();
    return Status::kSuccess;
}

}  // namespace Orvel::Relay::Client
