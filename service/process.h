#ifndef ORVEL_SERVICE_PROCESS_H
#define ORVEL_SERVICE_PROCESS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// @file
/// What the service asks of the process that it runs in.

namespace Orvel::Service {

/// Whether the process has the rights of the superuser.
bool runsAsRoot();

/// The number of a user of this machine; nothing when there is no user of that name.
/// @throws std::system_error when it cannot be told.
std::optional<std::uint32_t> userNumber(const std::string& name);

/// Makes a write that cannot be done an error of that write, not the end of the process: to a pipe
/// or a socket that nobody reads, or to a file beyond the largest size that is allowed.
void surviveFailingWrites();

/// Lets the process have as many descriptors as the system allows it. What it is given at first is
/// meant for programs that have few, and would keep clients out before there are too many of them.
void allowManyDescriptors();

/// The number of a group of this machine.
/// @throws std::runtime_error when there is no group of that name.
std::uint32_t groupNamed(const std::string& name);

/// Lets the process come to its own end: signals that would end it are held back from now on. For
/// when no other thread runs any more.
void ignoreFurtherSignals();

/// Writes to standard error, as one piece; failure is ignored, as there is nobody left to tell.
void writeToStandardError(std::string_view text);

}  // namespace Orvel::Service

#endif
