#ifndef ORVEL_SERVICE_SERVE_H
#define ORVEL_SERVICE_SERVE_H

#include <filesystem>
#include <optional>
#include <string>

#include "service/log.h"

namespace Orvel::Service {

/// The endpoint that clients know.
inline constexpr const char* kEndpoint = "OrvelAnalyticsRpcEndpoint";

/// Runs the service on the calling thread until SIGTERM or SIGINT.
/// @param dataFolder the default one when nothing is said.
/// @param settingsFile the default one, if it is there, when nothing is said.
/// @param version what the log calls this program's version.
/// @return whether it ended because it was told to; what went wrong otherwise is in the log.
bool serve(const std::optional<std::filesystem::path>& dataFolder,
           const std::optional<std::filesystem::path>& settingsFile, const std::string& version,
           Log& log);

}  // namespace Orvel::Service

#endif
