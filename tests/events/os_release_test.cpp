#include "events/os_release.h"

#include <gtest/gtest.h>

#include "events/device_identity.h"

namespace {

using Orvel::Analytics::Events::osReleaseValue;
using Orvel::Analytics::Events::packVersion;

constexpr std::int64_t packed(std::uint64_t major, std::uint64_t minor, std::uint64_t build,
                              std::uint64_t revision) {
    return static_cast<std::int64_t>(major << 48 | minor << 32 | build << 16 | revision);
}

TEST(OsReleaseValue, ReadsPlainAndQuotedValues) {
    const std::string_view text =
        "# a comment\n\nPRETTY_NAME=\"Pretty\"\nNAME=\"Debian GNU/Linux\"\nVERSION_ID='12'\nID=x\n";
    EXPECT_EQ(osReleaseValue(text, "NAME"), "Debian GNU/Linux");
    EXPECT_EQ(osReleaseValue(text, "VERSION_ID"), "12");
    EXPECT_EQ(osReleaseValue(text, "ID"), "x");
}

TEST(OsReleaseValue, UnescapesInDoubleQuotesOnly) {
    EXPECT_EQ(osReleaseValue("NAME=\"a\\\"b\\\\c\\$d\\`e\\n\"", "NAME"), "a\"b\\c$d`e\\n");
    EXPECT_EQ(osReleaseValue("NAME='a\\\\b'", "NAME"), "a\\\\b");
}

TEST(OsReleaseValue, IsNothingWithoutTheVariable) {
    EXPECT_EQ(osReleaseValue("", "NAME"), std::nullopt);
    EXPECT_EQ(osReleaseValue("#NAME=x\nOTHER_NAME=y\nNAMES=z\nNAME", "NAME"), std::nullopt);
}

TEST(OsReleaseValue, TakesTheLastAssignmentAndTheLastLineWithoutItsEnd) {
    EXPECT_EQ(osReleaseValue("NAME=a\r\nNAME=b", "NAME"), "b");
    EXPECT_EQ(osReleaseValue("NAME=", "NAME"), "");
    EXPECT_EQ(osReleaseValue("NAME=\"", "NAME"), "\"");
}

TEST(PackVersion, PacksUpToFourNumbers) {
    EXPECT_EQ(packVersion("12"), packed(12, 0, 0, 0));
    EXPECT_EQ(packVersion("22.04"), packed(22, 4, 0, 0));
    EXPECT_EQ(packVersion("10.0.19045.3570"), 2814751015243250);
    EXPECT_EQ(packVersion("1.2.3.4.5"), packed(1, 2, 3, 4));
}

TEST(PackVersion, StopsAtTheFirstOtherCharacter) {
    EXPECT_EQ(packVersion("6.18.44-fc-v669"), packed(6, 18, 44, 0));
    EXPECT_EQ(packVersion("7a.5"), packed(7, 0, 0, 0));
    EXPECT_EQ(packVersion("1..2"), packed(1, 0, 0, 0));
    EXPECT_EQ(packVersion("rolling"), 0);
    EXPECT_EQ(packVersion(""), 0);
}

TEST(PackVersion, LimitsEachNumberTo16Bits) {
    EXPECT_EQ(packVersion("20240101"), packed(65535, 0, 0, 0));
    EXPECT_EQ(packVersion("1.99999999999999999999"), packed(1, 65535, 0, 0));
    EXPECT_LT(packVersion("40000"), 0) << "written as a signed number, it is read back";
}

TEST(DeviceIdentity, IsANameAndFourNumbersOnThisMachine) {
    const Orvel::WideString identity = Orvel::Analytics::Events::collectDeviceIdentity();
    const std::size_t space = identity.rfind(' ');
    ASSERT_NE(space, Orvel::WideString::npos);
    EXPECT_GT(space, 0U);
    EXPECT_EQ(
        std::count(identity.begin() + static_cast<std::ptrdiff_t>(space), identity.end(), '.'), 3);
}

}  // namespace
