#ifndef ORVEL_CLI_SERVICE_PROBE_H
#define ORVEL_CLI_SERVICE_PROBE_H

#include <cstdint>
#include <string>

/// @file
/// Whether the service can be reached, asked of the RPC client itself: the result of a session's
/// operation does not tell an unreachable service from one that refuses.

namespace Orvel::Tool {

/// Opens a connection to the service and closes it again. Blocks for at most the RPC client's
/// deadline.
/// @return the status of the attempt; 0 when the service can be reached.
[[nodiscard]] std::int32_t probeService();

/// A status of the RPC client in words, with its number.
[[nodiscard]] std::string describeStatus(std::int32_t status);

/// @throws Failure with `ExitStatus::Unreachable` and the reason in words when the service cannot
///     be reached.
void requireService();

}  // namespace Orvel::Tool

#endif
