/// The times of events where the library can write them to the year 9999, and where the platform
/// knows POSIX's rules of time zones.

#include <gmock/gmock.h>

#include <stdexcept>

#include "cli/event_time.h"
#include "support/time_zone.h"

namespace Orvel::Tool {
namespace {

TEST(EventTimeTest, GoesOnToTheEndOfTheYear9999) {
    EXPECT_EQ(readEventTime(R"({"t":253402300799})", "t"), 253'402'300'799);
    EXPECT_EQ(parseTime("9999-12-31T23:59:59Z"), 253'402'300'799);
    EXPECT_THROW(static_cast<void>(readEventTime(R"({"t":253402300800})", "t")),
                 std::invalid_argument);
}

TEST(EventTimeTest, ATextWithoutAnOffsetFollowsDaylightSaving) {
    const TestSupport::TimeZone zone("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(parseTime("2024-01-01 07:00:00"), 1'704'110'400);
    EXPECT_EQ(parseTime("2024-07-01 08:00:00"), 1'719'835'200);
}

}  // namespace
}  // namespace Orvel::Tool
