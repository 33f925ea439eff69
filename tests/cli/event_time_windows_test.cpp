/// The times of events where the library can write them to the year 3000.

#include <gmock/gmock.h>

#include "cli/event_time.h"
#include "support/time_zone.h"

namespace Orvel::Tool {
namespace {

std::string refusalOf(std::string_view time) {
    try {
        static_cast<void>(parseTime(time));
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "accepted";
}

TEST(EventTimeTest, ATimeAfterTheYear3000IsRefused) {
    const char* const refusal = "the time does not lie between the years 1970 and 3000";
    const TestSupport::TimeZone zone("UTC0");
    EXPECT_EQ(parseTime("3000-12-31T23:59:59Z"), 32'535'215'999);
    EXPECT_EQ(parseTime("3000-12-31 23:59:59"), 32'535'215'999);
    EXPECT_EQ(refusalOf("3001-01-01T00:00:00Z"), refusal);
    EXPECT_EQ(refusalOf("3001-01-01 00:00:00"), refusal);
    EXPECT_EQ(refusalOf("9999-12-31 23:59:59"), refusal) << "the platform has no such time";
}

}  // namespace
}  // namespace Orvel::Tool
