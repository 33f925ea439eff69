#include "cli/console.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <system_error>

#include "cli/failure.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

bool isUtf8(std::string_view text) {
    try {
        static_cast<void>(toWide(text));
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

struct Character {
    std::uint32_t point = 0;
    std::size_t bytes = 1;
};

/// The first character of a text in UTF-8 that is not empty.
Character firstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t bytes = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::uint32_t point = lead & (0x7FU >> bytes);
    for (const char next : text.substr(1, bytes - 1)) {
        point = (point << 6) | (static_cast<unsigned char>(next) & 0x3FU);
    }
    return {point, bytes};
}

/// Whether a character above ASCII steers a terminal: U+0080 to U+009F do as ESC sequences do, the
/// line separators may fake a line, and the marks of writing direction the order of what is read.
bool isSteering(std::uint32_t point) {
    const auto within = [point](std::uint32_t first, std::uint32_t last) {
        return point >= first && point <= last;
    };
    return within(0x80, 0x9F) || point == 0x061C || within(0x200E, 0x200F) ||
           within(0x2028, 0x202E) || within(0x2066, 0x2069);
}

}  // namespace

std::string printable(std::string_view text) {
    const bool utf8 = isUtf8(text);
    std::string safe;
    safe.reserve(text.size());
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        const Character character = utf8 ? firstCharacter(text) : Character{byte, 1};
        if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && !utf8)) {
            safe += fmt::format("\\x{:02x}", byte);
        } else if (isSteering(character.point)) {
            safe += fmt::format("\\u{:04x}", character.point);
        } else {
            safe += text.substr(0, character.bytes);
        }
        text.remove_prefix(character.bytes);
    }
    return safe;
}

void flushOutput(Console& console) {
    errno = 0;
    console.out.flush();
    if (console.out) {
        return;
    }
    const std::string reason =
        errno == 0 ? std::string() : ": " + std::generic_category().message(errno);
    throw Failure(ExitStatus::Failed, "cannot write to standard output" + reason);
}

}  // namespace Orvel::Tool
