#ifndef ORVEL_CLI_EVENT_TIME_H
#define ORVEL_CLI_EVENT_TIME_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

/// @file
/// The time of an event, taken from one of its members.

namespace Orvel::Tool {

/// The text of an event is not a JSON object.
class MalformedEvent : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads the time of an event.
/// @param event the event's text, UTF-8.
/// @param member the name of the member of the event that holds the time: an integer number of
///     seconds since 1970-01-01 00:00 UTC; or a text `YYYY-MM-DD HH:MM:SS`, with a blank or a "T"
///     in the middle, an optional fraction of a second (dropped), and "Z" or an offset such as
///     "+02:00". A text without an offset is the local time of the machine.
/// @return seconds since 1970-01-01 00:00 UTC, from 1 to the end of the last year that the library
///     can write on this platform.
/// @throws MalformedEvent when the text is not a JSON object; std::invalid_argument, with the
///     reason in words, when it holds no such time.
[[nodiscard]] std::int64_t readEventTime(std::string_view event, const std::string& member);

/// The same for the text of a time.
[[nodiscard]] std::int64_t parseTime(std::string_view text);

}  // namespace Orvel::Tool

#endif
