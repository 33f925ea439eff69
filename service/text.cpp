#include "service/text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Orvel::Service {

namespace {

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Texts are converted by blocks of this many code units, most of which are ASCII alone.
constexpr std::size_t kBlock = 128;

bool isAsciiBlock(const WideChar* units) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < kBlock; ++i) {
        bits |= units[i];
    }
    return bits < 0x80;
}

/// Writes one character. @return the place after it.
char* writeBytes(char* out, std::uint32_t point) {
    const auto trail = [point](unsigned shift) {
        return static_cast<char>(0x80 | ((point >> shift) & 0x3F));
    };
    if (point < 0x80) {
        *out++ = static_cast<char>(point);
    } else if (point < 0x800) {
        *out++ = static_cast<char>(0xC0 | (point >> 6));
        *out++ = trail(0);
    } else if (point < 0x10000) {
        *out++ = static_cast<char>(0xE0 | (point >> 12));
        *out++ = trail(6);
        *out++ = trail(0);
    } else {
        *out++ = static_cast<char>(0xF0 | (point >> 18));
        *out++ = trail(12);
        *out++ = trail(6);
        *out++ = trail(0);
    }
    return out;
}

/// How many bytes a character has whose first one this is; 0 when it is no first one.
std::size_t lengthOf(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    return lead < 0xC2 || lead > 0xF4 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// The character at the beginning of a text and the number of its bytes, if one is there.
struct Character {
    std::uint32_t point = 0;
    std::size_t length = 0;
};

std::optional<Character> firstCharacter(std::string_view text) {
    constexpr std::array<std::uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lengthOf(lead);
    if (length == 0 || length > text.size()) {
        return std::nullopt;
    }
    std::uint32_t point = length == 1 ? lead : lead & (0x7FU >> length);
    for (const char next : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0) != 0x80) {
            return std::nullopt;
        }
        point = (point << 6) | (byte & 0x3FU);
    }
    if (point < kSmallest[length] || point > 0x10FFFF || isHighSurrogate(point) ||
        isLowSurrogate(point)) {
        return std::nullopt;
    }
    return Character{point, length};
}

}  // namespace

std::optional<std::string> toUtf8(WideStringView text) {
    std::string out;
    out.reserve(text.size());
    std::array<char, 4 * kBlock> block;
    for (std::size_t i = 0; i < text.size();) {
        if (i + kBlock <= text.size() && isAsciiBlock(&text[i])) {
            for (std::size_t unit = 0; unit < kBlock; ++unit) {
                block[unit] = static_cast<char>(text[i + unit]);
            }
            out.append(block.data(), kBlock);
            i += kBlock;
            continue;
        }
        char* end = block.data();
        for (const std::size_t next = std::min(i + kBlock, text.size()); i < next; ++i) {
            std::uint32_t point = text[i];
            if (isLowSurrogate(point)) {
                return std::nullopt;
            }
            if (isHighSurrogate(point)) {
                if (i + 1 == text.size() || !isLowSurrogate(text[i + 1])) {
                    return std::nullopt;
                }
                ++i;
                point = 0x10000 + ((point - 0xD800) << 10) + (std::uint32_t{text[i]} - 0xDC00);
            }
            end = writeBytes(end, point);
        }
        out.append(block.data(), end);
    }
    return out;
}

std::optional<WideString> toUtf16(std::string_view text) {
    WideString out;
    out.reserve(text.size());
    while (!text.empty()) {
        const auto character = firstCharacter(text);
        if (!character) {
            return std::nullopt;
        }
        if (character->point < 0x10000) {
            out += static_cast<WideChar>(character->point);
        } else {
            out += static_cast<WideChar>(0xD7C0 + (character->point >> 10));
            out += static_cast<WideChar>(0xDC00 + (character->point & 0x3FF));
        }
        text.remove_prefix(character->length);
    }
    return out;
}

void appendAscii(WideString& text, std::string_view ascii) {
    text.append(ascii.begin(), ascii.end());
}

}  // namespace Orvel::Service
