#ifndef ORVEL_EVENTS_DEVICE_INFO_H
#define ORVEL_EVENTS_DEVICE_INFO_H

#include "orvel/analytics/text.h"

/// What the platform tells of the device.
namespace Orvel::Analytics::Events {

/// The version as the decimal text of one 64-bit number: from the most significant 16 bits on,
/// major, minor, build and revision.
WideString deviceFamilyVersion();

/// The operating system's name.
WideString operatingSystemName();

}  // namespace Orvel::Analytics::Events

#endif
