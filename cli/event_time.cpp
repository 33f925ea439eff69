#include "cli/event_time.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <charconv>
#include <chrono>
#include <ctime>
#include <limits>
#include <optional>
#include <stdexcept>

#include "cli/json_words.h"
#include "cli/platform.h"

namespace Orvel::Tool {

namespace {

struct Moment {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// Reads a text from left to right.
class Cursor {
  public:
    explicit Cursor(std::string_view text) : rest_(text) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }

    bool take(char wanted) {
        if (rest_.empty() || rest_.front() != wanted) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    bool number(std::size_t digits, int& value) {
        const std::string_view text = rest_.substr(0, digits);
        if (text.size() != digits || text.find_first_not_of("0123456789") != text.npos) {
            return false;
        }
        std::from_chars(text.data(), text.data() + text.size(), value);
        rest_.remove_prefix(digits);
        return true;
    }

    bool fraction() {
        const std::size_t digits = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        rest_.remove_prefix(digits);
        return digits > 0;
    }

  private:
    std::string_view rest_;
};

bool readMoment(Cursor& cursor, Moment& moment) {
    return cursor.number(4, moment.year) && cursor.take('-') && cursor.number(2, moment.month) &&
           cursor.take('-') && cursor.number(2, moment.day) &&
           (cursor.take(' ') || cursor.take('T')) && cursor.number(2, moment.hour) &&
           cursor.take(':') && cursor.number(2, moment.minute) && cursor.take(':') &&
           cursor.number(2, moment.second) && (!cursor.take('.') || cursor.fraction());
}

/// Reads "Z" or an offset; nothing at all means local time.
bool readOffset(Cursor& cursor, std::optional<int>& seconds) {
    if (cursor.atEnd()) {
        return true;
    }
    if (cursor.take('Z')) {
        seconds = 0;
        return true;
    }
    const bool west = cursor.take('-');
    int hours = 0;
    int minutes = 0;
    if ((!west && !cursor.take('+')) || !cursor.number(2, hours)) {
        return false;
    }
    static_cast<void>(cursor.take(':'));
    if (!cursor.number(2, minutes) || hours > 23 || minutes > 59) {
        return false;
    }
    seconds = (west ? -1 : 1) * (hours * 60 + minutes) * 60;
    return true;
}

bool isOnTheCalendar(const Moment& moment) {
    const std::chrono::year_month_day date{std::chrono::year(moment.year),
                                           std::chrono::month(static_cast<unsigned>(moment.month)),
                                           std::chrono::day(static_cast<unsigned>(moment.day))};
    return date.ok() && moment.hour < 24 && moment.minute < 60 && moment.second < 60;
}

std::int64_t toUtc(const Moment& moment, int offset) {
    const std::chrono::sys_days date = std::chrono::year_month_day{
        std::chrono::year(moment.year), std::chrono::month(static_cast<unsigned>(moment.month)),
        std::chrono::day(static_cast<unsigned>(moment.day))};
    const auto instant = date + std::chrono::hours(moment.hour) +
                         std::chrono::minutes(moment.minute) +
                         std::chrono::seconds(moment.second - offset);
    return std::int64_t{instant.time_since_epoch().count()};
}

std::int64_t localToUtc(const Moment& moment) {
    std::tm local{};
    local.tm_year = moment.year - 1900;
    local.tm_mon = moment.month - 1;
    local.tm_mday = moment.day;
    local.tm_hour = moment.hour;
    local.tm_min = moment.minute;
    local.tm_sec = moment.second;
    local.tm_isdst = -1;  // The platform knows whether daylight saving applied on that day.
    return std::int64_t{std::mktime(&local)};
}

/// The end of the last year that the library can write.
std::int64_t lastReportable() {
    const std::chrono::sys_days next =
        std::chrono::year(lastReportableYear() + 1) / std::chrono::January / 1;
    return std::chrono::sys_seconds(next).time_since_epoch().count() - 1;
}

std::int64_t requireReportable(std::int64_t seconds) {
    // A time that it cannot write becomes an empty timestamp in the library.
    if (seconds < 1 || seconds > lastReportable()) {
        throw std::invalid_argument(fmt::format(
            "the time does not lie between the years 1970 and {}", lastReportableYear()));
    }
    return seconds;
}

nlohmann::json parseObject(std::string_view text) {
    try {
        nlohmann::json document = nlohmann::json::parse(text);
        if (!document.is_object()) {
            throw MalformedEvent(fmt::format("not a JSON object but {}", kindOf(document)));
        }
        return document;
    } catch (const nlohmann::json::exception& error) {
        throw MalformedEvent("not a JSON object: " + reasonOf(error));
    }
}

}  // namespace

std::int64_t parseTime(std::string_view text) {
    Cursor cursor(text);
    Moment moment;
    std::optional<int> offset;
    if (!readMoment(cursor, moment) || !readOffset(cursor, offset) || !cursor.atEnd()) {
        throw std::invalid_argument(
            "the time is not of the form YYYY-MM-DD HH:MM:SS, with or without an offset");
    }
    if (!isOnTheCalendar(moment)) {
        throw std::invalid_argument("the time does not exist on the calendar or the clock");
    }
    return requireReportable(offset ? toUtc(moment, *offset) : localToUtc(moment));
}

std::int64_t readEventTime(std::string_view event, const std::string& member) {
    const nlohmann::json document = parseObject(event);
    if (!document.contains(member)) {
        throw std::invalid_argument(
            fmt::format("the event has no member \"{}\" to take its time from", member));
    }
    const nlohmann::json& value = document.at(member);
    if (value.is_string()) {
        return parseTime(value.get_ref<const std::string&>());
    }
    constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t{kLargest}) {
        return requireReportable(kLargest);
    }
    if (value.is_number_integer()) {
        return requireReportable(value.get<std::int64_t>());
    }
    throw std::invalid_argument(
        fmt::format("member \"{}\" must be a time, as a text or an integer number, not {}", member,
                    kindOf(value)));
}

}  // namespace Orvel::Tool
