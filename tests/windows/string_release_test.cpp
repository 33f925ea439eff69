/// Every text that the platform gives is deleted. The platform tells nobody how many texts there
/// are, so the texts here are so large that the memory of the process shows them.

#include <gtest/gtest.h>

#include <string>

#include "events/device_info.h"
#include "json/json.h"
#include "windows/runtime_fixture.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::Json::Document;
using Orvel::TestSupport::OnStandIn;

constexpr std::size_t kMegabyte = 1U << 20U;

/// The private memory that the process has in use.
std::size_t committedMemory() {
    std::size_t committed = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) {
            committed += region.RegionSize;
        }
    }
    return committed;
}

/// Whether repeating `work`, which receives a text of a megabyte each time, keeps the memory.
template <typename Work>
bool keepsMemory(Work work) {
    constexpr std::size_t kTimes = 64;
    work();
    const std::size_t before = committedMemory();
    for (std::size_t time = 0; time < kTimes; ++time) {
        work();
    }
    return committedMemory() > before + kTimes * kMegabyte / 2;
}

class ReceivedText : public OnStandIn {
  protected:
    const WideString large = WideString(kMegabyte / sizeof(wchar_t), L'x');
};

TEST_F(ReceivedText, ThatIsNotDeletedIsNoticed) {
    EXPECT_TRUE(keepsMemory([&] { static_cast<void>(new WideString(large)); }));
}

TEST_F(ReceivedText, OfAJsonValueIsDeleted) {
    Document document;
    const auto value = document.stringValue(large);
    EXPECT_FALSE(keepsMemory([&] { ASSERT_EQ(value.stringify().size(), large.size() + 2); }));
}

TEST_F(ReceivedText, OfAMemberIsDeleted) {
    Document document;
    auto object = document.newObject();
    object.setNamedValue(L"a", document.stringValue(large));
    EXPECT_FALSE(keepsMemory([&] { ASSERT_EQ(object.getNamedString(L"a"), large); }));
}

TEST_F(ReceivedText, OfTheDeviceIsDeleted) {
    runtime.setDeviceFamilyVersion(large);
    runtime.setOperatingSystem(large);
    EXPECT_FALSE(
        keepsMemory([&] { ASSERT_EQ(Orvel::Analytics::Events::deviceFamilyVersion(), large); }));
    EXPECT_FALSE(
        keepsMemory([&] { ASSERT_EQ(Orvel::Analytics::Events::operatingSystemName(), large); }));
}

}  // namespace
