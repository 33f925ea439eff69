#include "relay/client/endpoint_client.h"

#include <cerrno>
#include <utility>

namespace Orvel::Relay::Client {
namespace {

// The host's `errno` is its own.
class ErrnoKept {
  public:
    ErrnoKept() : value_(errno) {}
    ErrnoKept(const ErrnoKept&) = delete;
    ErrnoKept& operator=(const ErrnoKept&) = delete;
    ~ErrnoKept() { errno = value_; }

  private:
    int value_;
};

}  // namespace

EndpointClient::EndpointClient(std::unique_ptr<Transport> transport)
    : connection_(std::move(transport)) {}

EndpointClient::~EndpointClient() {
    const ErrnoKept kept;
    connection_.close();
}

std::int32_t EndpointClient::OpenConnection(WideString argument) {
    const ErrnoKept kept;
    connection_.close();
    return connection_.open(argument);
}

std::int32_t EndpointClient::ExecuteCommand(WideString target, std::uint32_t argument,
                                            WideString command, WideString& reply) {
    const ErrnoKept kept;
    if (!connection_.isOpen()) {
        return Status::kConnectionLost;
    }
    return connection_.execute(target, argument, command, reply);
}

std::int32_t EndpointClient::CloseConnection() {
    const ErrnoKept kept;
    if (!connection_.isOpen()) {
        return Status::kConnectionLost;
    }
    connection_.close();
    return Status::kSuccess;
}

}  // namespace Orvel::Relay::Client
