/// The layout of a GUID's text, with a platform that gives a known one.

#include <gtest/gtest.h>

#include "events/guid.h"
#include "events/guid_source.h"

namespace Orvel::Analytics::Events {

Guid newGuid() {
    return {0x00AB'CDEF, 0x0102, 0xF0E0, {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x07}};
}

bool platformReadsGuid(const WideString& text) { return text.empty(); }

}  // namespace Orvel::Analytics::Events

namespace {

TEST(IsBracedGuid, LeavesTheLastWordToThePlatform) {
    EXPECT_FALSE(Orvel::Analytics::Events::isBracedGuid(
        ORVEL_TEXT("{00000000-0000-0000-0000-000000000000}")));
}

TEST(GenerateGuidString, WritesEachFieldMostSignificantDigitFirst) {
    EXPECT_EQ(Orvel::Analytics::Events::generateGuidString(),
              ORVEL_TEXT("00ABCDEF-0102-F0E0-0011-223344556607"));
}

}  // namespace
