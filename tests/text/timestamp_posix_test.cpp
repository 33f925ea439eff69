/// Local timestamps where the platform knows POSIX's rules of time zones.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/time_zone.h"
#include "text/timestamp.h"

namespace {

using Orvel::Analytics::Text::formatLocalTimestamp;
using Orvel::TestSupport::TimeZone;

TEST(FormatLocalTimestamp, AppliesDaylightSaving) {
    const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(formatLocalTimestamp(1'705'320'000), ORVEL_TEXT("20240115T130000"));
    EXPECT_EQ(formatLocalTimestamp(1'721'044'800), ORVEL_TEXT("20240715T140000"));
}

TEST(FormatLocalTimestamp, GoesOnToTheEndOfTheYear9999) {
    const TimeZone zone("UTC0");
    EXPECT_EQ(formatLocalTimestamp(253'402'300'799), ORVEL_TEXT("99991231T235959"));
}

TEST(FormatLocalTimestamp, SpellsOutYearsBeyond9999) {
    const TimeZone zone("UTC0");
    EXPECT_EQ(formatLocalTimestamp(253'402'300'800), ORVEL_TEXT("100000101T000000"));
    EXPECT_EQ(formatLocalTimestamp(67'767'976'233'532'799), ORVEL_TEXT("21474836471231T235959"));
}

TEST(FormatLocalTimestamp, HeedsEveryChangeOfTz) {
    unsetenv("TZ");
    const auto inTheSystemsZone = formatLocalTimestamp(1'705'320'000);
    {
        const TimeZone zone("WEST+23:17");
        EXPECT_EQ(formatLocalTimestamp(1'705'320'000), ORVEL_TEXT("20240114T124300"));
    }
    EXPECT_EQ(formatLocalTimestamp(1'705'320'000), inTheSystemsZone);
    const TimeZone zone("EAST-2");
    EXPECT_EQ(formatLocalTimestamp(1'705'320'000), ORVEL_TEXT("20240115T140000"));
}

}  // namespace
