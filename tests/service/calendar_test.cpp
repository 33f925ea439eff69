#include "service/calendar.h"

#include <gtest/gtest.h>

#include "service/time_ordered_ids.h"

namespace Orvel::Service {
namespace {

using std::chrono::milliseconds;

TEST(CalendarTest, AcceptsTimesThatACalendarShows) {
    for (const char* text : {"20240131T235959", "20240229T000000", "19700101T000000",
                             "20001231T235960", "20000229T120000"}) {
        EXPECT_TRUE(isCompactTimestamp(text)) << text;
    }
}

TEST(CalendarTest, RefusesEveryOtherForm) {
    for (const char* text : {"",
                             "2024-01-31T23:59:59",
                             "20240131 235959",
                             "20240131t235959",
                             "20240131T23595",
                             "20240131T2359590",
                             "20240131T235959Z",
                             " 20240131T235959",
                             "2024013aT235959",
                             "20230229T000000",
                             "19000229T000000",
                             "20240431T000000",
                             "20241301T000000",
                             "20240001T000000",
                             "20240100T000000",
                             "20240132T000000",
                             "20240131T240000",
                             "20240131T236000",
                             "20240131T235961",
                             "-0240131T235959"}) {
        EXPECT_FALSE(isCompactTimestamp(text)) << text;
    }
}

TEST(CalendarTest, WritesUtc) {
    EXPECT_EQ(utcText(milliseconds{0}), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(utcText(milliseconds{1'709'251'199'007}), "2024-02-29T23:59:59.007Z");
}

TEST(TimeOrderedIdsTest, GrowWithTimeAndWithinAMillisecond) {
    TimeOrderedIds ids;
    const auto first = ids.next(milliseconds{1000});
    EXPECT_EQ(first, std::int64_t{1000} << 21);
    EXPECT_EQ(ids.next(milliseconds{1000}), first + 1);
    EXPECT_EQ(ids.next(milliseconds{1001}), std::int64_t{1001} << 21);
}

TEST(TimeOrderedIdsTest, GoOnWhenTheClockGoesBack) {
    TimeOrderedIds ids(std::int64_t{5000} << 21);
    EXPECT_EQ(ids.next(milliseconds{10}), (std::int64_t{5000} << 21) + 1);
    EXPECT_EQ(ids.next(milliseconds{-10}), (std::int64_t{5000} << 21) + 2);
}

TEST(TimeOrderedIdsTest, StayPositiveForAnyClock) {
    TimeOrderedIds ids;
    EXPECT_GT(ids.next(milliseconds::max()), 0);
}

TEST(UtcDay, BeginsAtMidnightAlsoBefore1970) {
    constexpr std::int64_t kDay = 86'400'000;
    EXPECT_EQ(utcDay(std::chrono::milliseconds{0}), 0);
    EXPECT_EQ(utcDay(std::chrono::milliseconds{kDay - 1}), 0);
    EXPECT_EQ(utcDay(std::chrono::milliseconds{kDay}), 1);
    EXPECT_EQ(utcDay(std::chrono::milliseconds{-1}), -1);
}

}  // namespace
}  // namespace Orvel::Service
