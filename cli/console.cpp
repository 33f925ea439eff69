#include "cli/console.h"

#include <fmt/format.h>

#include <cerrno>
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

}  // namespace

std::string printable(std::string_view text) {
    const bool utf8 = isUtf8(text);
    std::string safe;
    safe.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const auto next = at + 1 < text.size() ? static_cast<unsigned char>(text[at + 1]) : 0U;
        // U+0080 to U+009F steer terminals as ESC sequences do.
        const bool c1Control = byte == 0xC2 && next < 0xA0;
        if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && !utf8)) {
            safe += fmt::format("\\x{:02x}", byte);
        } else if (c1Control) {
            safe += fmt::format("\\u{:04x}", next);
            ++at;
        } else {
            safe += text[at];
        }
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
        errno == 0 ? std::string() : ": " + std::system_category().message(errno);
    throw Failure(ExitStatus::Failed, "cannot write to standard output" + reason);
}

}  // namespace Orvel::Tool
