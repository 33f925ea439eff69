#ifndef ORVEL_BENCH_RELAY_SERVICE_H
#define ORVEL_BENCH_RELAY_SERVICE_H

#include <filesystem>
#include <functional>
#include <memory>

#include "bench/relay/service_process.h"
#include "orvel/analytics/text.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Bench {

inline constexpr WideStringView kApplication = ORVEL_TEXT("Benchmark");
inline constexpr WideStringView kAcknowledged = ORVEL_TEXT("Benchmark::ACK::");
inline constexpr WideStringView kSuccess = ORVEL_TEXT("Benchmark::SUCCESS::");

/// The relay's server with a service that accepts whatever the application `kApplication` says, and
/// answers at once. Does not return.
void serveRelay(const std::filesystem::path& socket, const std::function<void()>& isListening);

/// Makes RPC clients of this process look for their servers in the folder of this one.
void useService(const ServiceProcess& service);

/// An RPC client of the endpoint at which a `ServiceProcess` serves.
std::shared_ptr<Relay::Client::Core::RpcClient> makeClient(const ServiceProcess& service);

}  // namespace Orvel::Bench

#endif
