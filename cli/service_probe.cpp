#include "cli/service_probe.h"

#include <fmt/format.h>

#include "cli/failure.h"
#include "cli/platform.h"
#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Tool {

namespace {

namespace Status = Relay::Status;

constexpr WideStringView kEndpoint = ORVEL_TEXT("OrvelAnalyticsRpcEndpoint");

std::string words(std::int32_t status) {
    switch (status) {
        case Status::kSuccess:
            return "it can be reached";
        case Status::kAccessDenied:
            return "this user may not connect to it";
        case Status::kTimeout:
            return "it did not answer in time";
        case Status::kServerUnavailable:
            return fmt::format("nobody listens at its endpoint; {}", absentServiceHint());
        case Status::kConnectionLost:
            return "it closed the connection";
        case Status::kProtocolError:
            return "what listens at its endpoint does not speak its protocol";
        default:
            return "the connection failed";
    }
}

}  // namespace

std::int32_t probeService() {
    const auto client =
        Relay::Client::Native::RpcClient::GetClientForEndpoint(Relay::WideString(kEndpoint));
    if (client == nullptr) {
        return Status::kServerUnavailable;
    }
    const std::int32_t status = client->OpenConnection({});
    if (status == Status::kSuccess) {
        client->CloseConnection();
    }
    return status;
}

std::string describeStatus(std::int32_t status) {
    return fmt::format("{} (status {})", words(status), status);
}

void requireService() {
    const std::int32_t status = probeService();
    if (status != Status::kSuccess) {
        throw Failure(ExitStatus::Unreachable,
                      "the analytics service cannot be reached: " + describeStatus(status));
    }
}

}  // namespace Orvel::Tool
