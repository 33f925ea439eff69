#include "cli/event_time.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "support/time_zone.h"

namespace Orvel::Tool {
namespace {

constexpr std::int64_t kNoon2024 = 1'704'110'400;  // 2024-01-01 12:00:00 UTC

TEST(EventTimeTest, SecondsAreTakenAsTheyAre) {
    EXPECT_EQ(readEventTime(R"({"t":1})", "t"), 1);
    EXPECT_EQ(readEventTime(R"({"a":0,"t":1704110400})", "t"), kNoon2024);
    EXPECT_EQ(readEventTime(R"({"t":32535215999})", "t"), 32'535'215'999) << "the year 3000 ends";
}

TEST(EventTimeTest, ATextWithAnOffsetDoesNotDependOnTheTimeZone) {
    const TestSupport::TimeZone zone("YYY5");
    EXPECT_EQ(parseTime("2024-01-01T12:00:00Z"), kNoon2024);
    EXPECT_EQ(parseTime("2024-01-01 14:00:00+02:00"), kNoon2024);
    EXPECT_EQ(parseTime("2024-01-01 06:30:00-0530"), kNoon2024);
    EXPECT_EQ(parseTime("2024-01-01T12:00:00.999Z"), kNoon2024);
}

TEST(EventTimeTest, ATextWithoutAnOffsetIsLocalTime) {
    {
        const TestSupport::TimeZone zone("YYY5");
        EXPECT_EQ(parseTime("2024-01-01 07:00:00"), kNoon2024);
    }
    const TestSupport::TimeZone zone("XXX-3");
    EXPECT_EQ(parseTime("2024-01-01 15:00:00"), kNoon2024);
}

TEST(EventTimeTest, LeapDaysAreOnTheCalendarInLeapYearsOnly) {
    EXPECT_EQ(parseTime("2024-02-29T00:00:00Z"), 1'709'164'800);
    EXPECT_THROW(static_cast<void>(parseTime("2023-02-29T00:00:00Z")), std::invalid_argument);
}

TEST(EventTimeTest, WhatIsNoTimeIsRefused) {
    for (const char* text : {"",
                             "now",
                             "2024-01-01",
                             "2024-01-01 12:00",
                             "2024-1-1 12:00:00",
                             "2024-01-01 12:00:00 ",
                             " 2024-01-01 12:00:00",
                             "2024-01-01t12:00:00",
                             "2024-01-01 12:00:00.",
                             "2024-13-01 12:00:00",
                             "2024-00-01 12:00:00",
                             "2024-01-32 12:00:00",
                             "2024-01-01 24:00:00",
                             "2024-01-01 12:60:00",
                             "2024-01-01 12:00:60",
                             "2024-01-01 12:00:00+2",
                             "2024-01-01 12:00:00+24:00",
                             "2024-01-01 12:00:00+02:60",
                             "2024-01-01 12:00:00ZZ",
                             "+024-01-01 12:00:00"}) {
        EXPECT_THROW(static_cast<void>(parseTime(text)), std::invalid_argument) << text;
    }
}

TEST(EventTimeTest, ATimeThatTheLibraryCannotStampIsRefused) {
    for (const char* event :
         {R"({"t":0})", R"({"t":-1})", R"({"t":253402300800})", R"({"t":18446744073709551615})",
          R"({"t":"1970-01-01T00:00:00Z"})", R"({"t":"0001-01-01T00:00:00Z"})"}) {
        EXPECT_THROW(static_cast<void>(readEventTime(event, "t")), std::invalid_argument) << event;
    }
}

TEST(EventTimeTest, AMemberOfAnotherTypeIsRefused) {
    for (const char* event : {R"({"t":null})", R"({"t":true})", R"({"t":1.5})", R"({"t":1e9})",
                              R"({"t":[1]})", R"({"t":{}})", R"({"u":1})", R"({})"}) {
        EXPECT_THROW(static_cast<void>(readEventTime(event, "t")), std::invalid_argument) << event;
    }
}

TEST(EventTimeTest, WhatIsNoObjectIsMalformed) {
    for (const char* event : {"", "[1]", "1", "{", "{\"t\":1}x", "{\"t\":\"\\ud800\"}"}) {
        EXPECT_THROW(static_cast<void>(readEventTime(event, "t")), MalformedEvent) << event;
    }
}

TEST(EventTimeTest, TheLastOfTwoEqualNamesCounts) {
    EXPECT_EQ(readEventTime(R"({"t":5,"\u0074":7})", "t"), 7);
}

}  // namespace
}  // namespace Orvel::Tool
