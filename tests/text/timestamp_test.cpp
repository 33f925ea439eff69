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

TEST(FormatLocalTimestamp, AppliesDaylightSaving) {
    const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(formatLocalTimestamp(1'705'320'000), ORVEL_TEXT("20240115T130000"));
    EXPECT_EQ(formatLocalTimestamp(1'721'044'800), ORVEL_TEXT("20240715T140000"));
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
