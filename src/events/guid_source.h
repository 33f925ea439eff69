#ifndef ORVEL_EVENTS_GUID_SOURCE_H
#define ORVEL_EVENTS_GUID_SOURCE_H

#include <array>
#include <cstdint>

#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Events {

/// The fields of a GUID.
struct Guid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::array<std::uint8_t, 8> data4;
};

/// A new random GUID of the platform.
Guid newGuid();

/// Whether the platform, where it has a reader of GUIDs, reads a text as one.
/// @param text a GUID in braces. Anything else could be taken for a program's name and be looked
/// up.
bool platformReadsGuid(const WideString& text);

}  // namespace Orvel::Analytics::Events

#endif
