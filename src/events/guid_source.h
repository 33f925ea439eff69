#ifndef ORVEL_EVENTS_GUID_SOURCE_H
#define ORVEL_EVENTS_GUID_SOURCE_H

#include <array>
#include <cstdint>

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

}  // namespace Orvel::Analytics::Events

#endif
