#include <cstdint>
#include <memory>

#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"

// An RPC client that answers at once and keeps nothing: what is left is the library's own work.

namespace Orvel::Relay::Client {
namespace {

constexpr WideStringView kHandshake = ORVEL_TEXT("::CONNECT_APP::");
constexpr WideStringView kConsentQuery = ORVEL_TEXT("::GET_CONSENT::");
constexpr WideStringView kConsentRecord = ORVEL_TEXT("::CONSENT_RECORD::")
    ORVEL_TEXT(R"({"device_serial_number":"SN-1","timestamp":"2026-01-31T12:00:00Z",)")
        ORVEL_TEXT(R"("country_code":"PT","process_data":true,"managed":false,"tenant":"home",)")
            ORVEL_TEXT(R"("consent_source":"setup","privacy_documents":{"privacyurl":)")
                ORVEL_TEXT(R"("https://example.com/privacy","warrantyurl":)")
                    ORVEL_TEXT(R"("https://example.com/warranty","telemetryurl":)")
                        ORVEL_TEXT(R"("https://example.com/telemetry"},)")
                            ORVEL_TEXT(R"("processing_permissions":{"marketing":"Accepted",)")
                                ORVEL_TEXT(R"("support":"Rejected","product_enhancement":)")
                                    ORVEL_TEXT(R"("Unknown"}})");

class AnsweringClient final : public Core::RpcClient {
  public:
    std::int32_t OpenConnection(WideString /*argument*/) override { return Status::kSuccess; }

    std::int32_t ExecuteCommand(WideString /*target*/, std::uint32_t /*argument*/,
                                WideString command, WideString& reply) override {
        if (command.ends_with(kHandshake)) {
            reply.assign(command, 0, command.size() - kHandshake.size());
            reply += ORVEL_TEXT("::ACK::");
        } else if (command.ends_with(kConsentQuery)) {
            reply = kConsentRecord;
        } else {
            reply = ORVEL_TEXT("::SUCCESS::");
        }
        return Status::kSuccess;
    }

    std::int32_t CloseConnection() override { return Status::kSuccess; }
};

}  // namespace

// Whoever stands in for the client takes the name as it does.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::shared_ptr<Core::RpcClient> Native::RpcClient::GetClientForEndpoint(WideString /*endpoint*/) {
    return std::make_shared<AnsweringClient>();
}

}  // namespace Orvel::Relay::Client
