#ifndef ORVEL_RELAY_OPEN_HANDLES_H
#define ORVEL_RELAY_OPEN_HANDLES_H

#include <cstddef>
#include <cstdint>
#include <set>

/// @file
/// What this process has open: descriptors, or the system's handles.

namespace Orvel::Relay::Testing {

std::set<std::uintptr_t> openHandles();

/// Whether a program that this one starts would have it, too.
bool isInherited(std::uintptr_t handle);

/// How many of them a client's connection takes.
std::size_t handlesOfAConnection();

}  // namespace Orvel::Relay::Testing

#endif
