#ifndef ORVEL_EVENTS_DEVICE_IDENTITY_H
#define ORVEL_EVENTS_DEVICE_IDENTITY_H

#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Events {

/// The device's text, such as `Debian GNU/Linux 12.0.0.0`: the operating system's name, a space and
/// the four parts of its version.
/// @throws std::invalid_argument "invalid stoll argument" or std::out_of_range "stoll argument out
///     of range" for a version that is no 64-bit number, and whatever the platform raises.
WideString collectDeviceIdentity();

}  // namespace Orvel::Analytics::Events

#endif
