#include "bench/relay/relay_service.h"

#include <stdlib.h>

#include "orvel/relay/server.h"

namespace Orvel::Bench {
namespace {

class AcceptingConversation final : public Relay::Server::Conversation {
  public:
    Relay::Server::Answer execute(const WideString& /*target*/, std::uint32_t /*argument*/,
                                  WideString command) override {
        const bool handshake = command.ends_with(ORVEL_TEXT("::CONNECT_APP::"));
        return {Relay::Status::kSuccess, WideString(handshake ? kAcknowledged : kSuccess)};
    }
};

}  // namespace

void serveRelay(const std::filesystem::path& socket, const std::function<void()>& isListening) {
    Relay::Server::Server server(
        socket, [](const auto&) { return std::make_unique<AcceptingConversation>(); });
    isListening();
    server.run();
}

void useService(const ServiceProcess& service) {
    ::setenv("ORVEL_RPC_DIRECTORY", service.folder().c_str(), 1);
}

std::shared_ptr<Relay::Client::Core::RpcClient> makeClient(const ServiceProcess& service) {
    useService(service);
    return Relay::Client::Native::RpcClient::GetClientForEndpoint(
        ORVEL_TEXT("OrvelAnalyticsRpcEndpoint"));
}

}  // namespace Orvel::Bench
