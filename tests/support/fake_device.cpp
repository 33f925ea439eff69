#include "support/fake_device.h"

#include "events/device_info.h"
#include "json/raise.h"

namespace Orvel::TestSupport {

FakeDevice& fakeDevice() {
    static FakeDevice device;
    return device;
}

}  // namespace Orvel::TestSupport

/// Stands in for the platform's own answers when a program is linked with it.
namespace Orvel::Analytics::Events {

WideString deviceFamilyVersion() {
    const auto& device = TestSupport::fakeDevice();
    if (device.versionFails) {
        Json::raise(*device.versionFails, "no version");
    }
    return device.version;
}

WideString operatingSystemName() {
    const auto& device = TestSupport::fakeDevice();
    if (device.nameFails) {
        Json::raise(*device.nameFails, "no name");
    }
    return device.name;
}

}  // namespace Orvel::Analytics::Events
