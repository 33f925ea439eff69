#include "events/device_identity.h"

#include <cstdint>
#include <string>

#include "events/device_info.h"
#include "text/numbers.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Events {

WideString collectDeviceIdentity() {
    const auto packed = static_cast<std::uint64_t>(Text::toInt64(deviceFamilyVersion()));
    WideString identity = operatingSystemName();
    char separator = ' ';
    for (int shift = 48; shift >= 0; shift -= 16) {
        Text::appendUtf8(identity, separator + std::to_string((packed >> shift) & 0xFFFF));
        separator = '.';
    }
    return identity;
}

}  // namespace Orvel::Analytics::Events
