#include <sys/random.h>

#include <algorithm>
#include <random>

#include "events/guid_source.h"

namespace Orvel::Analytics::Events {
namespace {

/// A request of this size is never cut short or interrupted once the kernel's generator is ready
/// (getrandom(2)). Where a sandbox forbids the call, the standard library has its own sources.
void fillWithRandom(Guid& guid) {
    if (getrandom(&guid, sizeof guid, 0) == static_cast<ssize_t>(sizeof guid)) {
        return;
    }
    std::random_device source;
    guid.data1 = source();
    guid.data2 = static_cast<std::uint16_t>(source());
    guid.data3 = static_cast<std::uint16_t>(source());
    std::generate(guid.data4.begin(), guid.data4.end(),
                  [&] { return static_cast<std::uint8_t>(source()); });
}

}  // namespace

Guid newGuid() {
    static_assert(sizeof(Guid) == 16);
    Guid guid{};
    fillWithRandom(guid);
    guid.data3 = static_cast<std::uint16_t>((guid.data3 & 0x0FFF) | 0x4000);   // version 4
    guid.data4[0] = static_cast<std::uint8_t>((guid.data4[0] & 0x3F) | 0x80);  // variant 10
    return guid;
}

bool platformReadsGuid(const WideString& /*text*/) { return true; }

}  // namespace Orvel::Analytics::Events
