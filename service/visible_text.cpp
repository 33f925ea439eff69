#include "service/visible_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace Orvel::Service {

namespace {

struct ShortCharacter {
    std::uint32_t point = 0;
    std::size_t bytes = 1;
};

/// The next character if it is of one to three bytes, which all that is searched for are.
ShortCharacter firstShortCharacter(std::string_view text) {
    const auto byte = [text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const std::uint32_t lead = byte(0);
    if (lead >= 0xC0 && lead < 0xE0 && text.size() >= 2) {
        return {((lead & 0x1F) << 6) | (byte(1) & 0x3F), 2};
    }
    if (lead >= 0xE0 && lead < 0xF0 && text.size() >= 3) {
        return {((lead & 0x0F) << 12) | ((byte(1) & 0x3F) << 6) | (byte(2) & 0x3F), 3};
    }
    // The bytes of longer characters, taken one by one, are no characters that are searched for.
    return {lead < 0x80 ? lead : 0xFFFD, 1};
}

bool isSteering(std::uint32_t point) {
    const auto within = [point](std::uint32_t first, std::uint32_t last) {
        return point >= first && point <= last;
    };
    return point < 0x20 || within(0x7F, 0x9F) || point == 0x061C || within(0x200E, 0x200F) ||
           within(0x2028, 0x202E) || within(0x2066, 0x2069);
}

}  // namespace

std::string visibleText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const ShortCharacter character = firstShortCharacter(text);
        if (isSteering(character.point)) {
            fmt::format_to(std::back_inserter(out), "\\u{:04x}", character.point);
        } else {
            out += text.substr(0, character.bytes);
        }
        text.remove_prefix(character.bytes);
    }
    return out;
}

std::string singleLine(std::string_view json) {
    std::string line(json);
    std::replace_if(
        line.begin(), line.end(),
        [](char character) { return character == '\n' || character == '\r' || character == '\t'; },
        ' ');
    return line;
}

}  // namespace Orvel::Service
