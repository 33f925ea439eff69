/// Local timestamps where the platform's calendar ends soon after the year 3000.

#include <gtest/gtest.h>

#include "support/time_zone.h"
#include "text/timestamp.h"

namespace {

using Orvel::Analytics::Text::formatLocalTimestamp;
using Orvel::TestSupport::TimeZone;

constexpr std::int64_t kLastSecond = 32'535'244'799;

TEST(FormatLocalTimestamp, GoesOnToTheLastSecondThatThePlatformConverts) {
    const TimeZone zone("UTC0");
    EXPECT_EQ(formatLocalTimestamp(kLastSecond), ORVEL_TEXT("30010101T075959"));
}

TEST(FormatLocalTimestamp, IsEmptyFromTheNextSecondOnWhateverTheTimeZone) {
    // The platform refuses the time and leaves fields that its formatter would end the process for.
    for (const char* name : {"UTC0", "XXX-3", "YYY5"}) {
        const TimeZone zone(name);
        EXPECT_EQ(formatLocalTimestamp(kLastSecond + 1), ORVEL_TEXT("")) << name;
        EXPECT_NE(formatLocalTimestamp(kLastSecond), ORVEL_TEXT("")) << name;
    }
}

}  // namespace
