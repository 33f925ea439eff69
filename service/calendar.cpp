#include "service/calendar.h"

#include <fmt/format.h>

#include <algorithm>

namespace Orvel::Service {

namespace {

unsigned number(std::string_view digits) {
    unsigned value = 0;
    for (const char digit : digits) {
        value = value * 10 + static_cast<unsigned>(digit - '0');
    }
    return value;
}

}  // namespace

std::chrono::milliseconds systemTime() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
}

bool isCompactTimestamp(std::string_view text) {
    constexpr std::string_view kForm = "00000000T000000";
    const auto fits = [](char character, char form) {
        return form == 'T' ? character == 'T' : character >= '0' && character <= '9';
    };
    if (!std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), fits)) {
        return false;
    }
    const std::chrono::year_month_day date{
        std::chrono::year{static_cast<int>(number(text.substr(0, 4)))},
        std::chrono::month{number(text.substr(4, 2))}, std::chrono::day{number(text.substr(6, 2))}};
    return date.ok() && number(text.substr(9, 2)) <= 23 && number(text.substr(11, 2)) <= 59 &&
           number(text.substr(13, 2)) <= 60;
}

std::int64_t utcDay(std::chrono::milliseconds time) {
    return std::chrono::floor<std::chrono::days>(time).count();
}

std::string utcText(std::chrono::milliseconds time) {
    const std::chrono::sys_time<std::chrono::milliseconds> point{time};
    const auto midnight = std::chrono::floor<std::chrono::days>(point);
    const std::chrono::year_month_day date{midnight};
    const std::chrono::hh_mm_ss clock{point - midnight};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                       clock.subseconds().count());
}

std::string utcText(std::int64_t milliseconds) {
    return utcText(std::chrono::milliseconds{milliseconds});
}

}  // namespace Orvel::Service
