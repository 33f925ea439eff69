#ifndef ORVEL_SERVICE_SERVICE_MANAGER_H
#define ORVEL_SERVICE_SERVICE_MANAGER_H

#include <string_view>

/// @file
/// What the service tells the service manager that started it, if one did and wants to know: the
/// protocol of sd_notify, without its library.

namespace Orvel::Service {

/// Clients are served from now on.
inline constexpr std::string_view kReady = "READY=1";
/// The service is about to end.
inline constexpr std::string_view kStopping = "STOPPING=1";

/// Sends a state to the socket that NOTIFY_SOCKET names, a path or, after an `@`, an abstract name.
/// Failure is ignored: whoever waits for the state has a deadline. Does not wait.
void tellServiceManager(std::string_view state);

}  // namespace Orvel::Service

#endif
