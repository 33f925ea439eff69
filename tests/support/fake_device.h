#ifndef ORVEL_SUPPORT_FAKE_DEVICE_H
#define ORVEL_SUPPORT_FAKE_DEVICE_H

#include <cstdint>
#include <optional>

#include "orvel/analytics/text.h"

namespace Orvel::TestSupport {

/// What the platform tells of the device; set by a test, for all of its program.
struct FakeDevice {
    WideString version = ORVEL_TEXT("2814751015243250");
    WideString name = ORVEL_TEXT("OS");
    /// When set, asking for the version or the name raises this status.
    std::optional<std::uint32_t> versionFails;
    std::optional<std::uint32_t> nameFails;
};

FakeDevice& fakeDevice();

}  // namespace Orvel::TestSupport

#endif
