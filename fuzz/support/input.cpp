#include "fuzz/support/input.h"

#include <algorithm>

namespace Orvel::Fuzz {
namespace {

/// How many bytes follow a first one of UTF-8.
std::size_t trailingBytes(unsigned char first) {
    return first < 0xC0 || first > 0xF7 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
}

}  // namespace

std::string_view Input::until(char separator) {
    const std::size_t end = std::min(rest_.find(separator), rest_.size());
    const std::string_view taken = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return taken;
}

std::u16string wideOf(std::string_view bytes) {
    std::u16string wide;
    while (!bytes.empty()) {
        const auto first = static_cast<unsigned char>(bytes.front());
        const std::size_t more = trailingBytes(first);
        const std::string_view trail = bytes.substr(1, more);
        const bool isWhole =
            trail.size() == more && std::all_of(trail.begin(), trail.end(), [](char c) {
                return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
            });
        if (more == 0 || !isWhole) {
            wide += static_cast<char16_t>(first);
            bytes.remove_prefix(1);
            continue;
        }
        std::uint32_t point = first & (0x3FU >> more);
        for (const char byte : trail) {
            point = (point << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
        }
        if (point < 0x10000) {
            wide += static_cast<char16_t>(point);
        } else {
            wide += static_cast<char16_t>(0xD7C0 + (point >> 10));
            wide += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
        }
        bytes.remove_prefix(1 + more);
    }
    return wide;
}

}  // namespace Orvel::Fuzz
