#include "text/timestamp.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/time_zone.h"

namespace {

using Orvel::Analytics::Text::formatLocalTimestamp;
using Orvel::TestSupport::TimeZone;

TEST(FormatLocalTimestamp, IsFifteenCharactersOfWallClock) {
    const TimeZone zone("UTC0");
    EXPECT_EQ(formatLocalTimestamp(1'706'745'599), ORVEL_TEXT("20240131T235959"));
    EXPECT_EQ(formatLocalTimestamp(1), ORVEL_TEXT("19700101T000001"));
}

TEST(FormatLocalTimestamp, FollowsTheTimeZoneOfTheMoment) {
    {
        const TimeZone zone("XXX-3");
        EXPECT_EQ(formatLocalTimestamp(1'706'745'599), ORVEL_TEXT("20240201T025959"));
    }
    const TimeZone zone("YYY5");
    EXPECT_EQ(formatLocalTimestamp(1'706'745'599), ORVEL_TEXT("20240131T185959"));
}

TEST(FormatLocalTimestamp, IsEmptyForZeroAndLess) {
    EXPECT_EQ(formatLocalTimestamp(0), ORVEL_TEXT(""));
    EXPECT_EQ(formatLocalTimestamp(-1), ORVEL_TEXT(""));
    EXPECT_EQ(formatLocalTimestamp(std::numeric_limits<std::int64_t>::min()), ORVEL_TEXT(""));
}

TEST(FormatLocalTimestamp, IsEmptyBeyondThePlatformsCalendar) {
    EXPECT_EQ(formatLocalTimestamp(std::numeric_limits<std::int64_t>::max()), ORVEL_TEXT(""));
}

}  // namespace
