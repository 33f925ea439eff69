#ifndef ORVEL_CLI_CONSOLE_H
#define ORVEL_CLI_CONSOLE_H

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

/// @file
/// What the tool has of the world around it; the tests hand in streams and a clock of their own.

namespace Orvel::Tool {

/// The streams and the clock of one run. The streams are borrowed for its length.
struct Console {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    /// Whether `err` is a terminal on which progress can be drawn.
    bool terminal = false;
    /// Whether colours are welcome on that terminal.
    bool colour = false;
    /// The current time, in seconds since 1970-01-01 00:00 UTC.
    std::function<std::int64_t()> now;
};

/// A text made safe for a terminal: control characters, line separators, marks of writing direction
/// and bytes that are no UTF-8 are shown as escapes such as `\x1b`, so that nothing a file or a
/// reply holds can steer the terminal or fake a line.
[[nodiscard]] std::string printable(std::string_view text);

/// Writes what is still buffered to standard output.
/// @throws Failure when it, or anything before it, could not be written.
void flushOutput(Console& console);

}  // namespace Orvel::Tool

#endif
