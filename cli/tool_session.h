#ifndef ORVEL_CLI_TOOL_SESSION_H
#define ORVEL_CLI_TOOL_SESSION_H

#include <string>

#include "orvel/analytics/session.h"

/// @file
/// The session of one run of the tool.

namespace Orvel::Tool {

/// What the command line says of the application that the tool speaks for, in UTF-8.
struct SessionOptions {
    std::string application;
    std::string applicationVersion;
    /// A GUID in braces; empty when the library is to generate one.
    std::string user;
};

/// Starts a session; does not talk to the service.
/// @throws Failure with `ExitStatus::Usage` when the library cannot take one of the texts.
[[nodiscard]] AnalyticsSession makeSession(const SessionOptions& options);

}  // namespace Orvel::Tool

#endif
