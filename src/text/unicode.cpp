#include "text/unicode.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "text/blocks.h"

namespace Orvel::Analytics::Text {
namespace {

using std::size_t;

constexpr bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

constexpr char byteOf(char32_t bits) { return static_cast<char>(static_cast<unsigned char>(bits)); }

/// Where a block is not ASCII, blocks are not tried again before so many units or bytes were taken
/// one by one.
constexpr size_t kPause = 32;

/// The code point at `at`, which moves past it: a surrogate that has no partner is its own number.
char32_t nextCodePoint(WideStringView wide, size_t& at) noexcept {
    const char32_t unit = wide[at++];
    if (isHighSurrogate(unit) && at < wide.size() && isLowSurrogate(wide[at])) {
        return 0x10000 + ((unit - 0xD800) << 10) + (char32_t{wide[at++]} - 0xDC00);
    }
    return unit;
}

/// Writes the sequence of a code point, an unpaired surrogate's included, and returns its end.
char* writeSequence(char32_t codePoint, char* out) noexcept {
    if (codePoint < 0x80) {
        *out++ = byteOf(codePoint);
    } else if (codePoint < 0x800) {
        *out++ = byteOf(0xC0 | (codePoint >> 6));
        *out++ = byteOf(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        *out++ = byteOf(0xE0 | (codePoint >> 12));
        *out++ = byteOf(0x80 | ((codePoint >> 6) & 0x3F));
        *out++ = byteOf(0x80 | (codePoint & 0x3F));
    } else {
        *out++ = byteOf(0xF0 | (codePoint >> 18));
        *out++ = byteOf(0x80 | ((codePoint >> 12) & 0x3F));
        *out++ = byteOf(0x80 | ((codePoint >> 6) & 0x3F));
        *out++ = byteOf(0x80 | (codePoint & 0x3F));
    }
    return out;
}

size_t asciiPrefix(std::string_view utf8) noexcept {
    size_t at = 0;
    for (std::uint64_t word = 0; at + sizeof word <= utf8.size(); at += sizeof word) {
        std::memcpy(&word, utf8.data() + at, sizeof word);
        if ((word & 0x8080808080808080U) != 0) {
            break;
        }
    }
    while (at < utf8.size() && static_cast<unsigned char>(utf8[at]) < 0x80) {
        ++at;
    }
    return at;
}

/// The length of the well-formed sequence at the start of `utf8`, or 0 (RFC 3629, section 4).
size_t wellFormedSequence(std::string_view utf8) noexcept {
    const auto byte = [&](size_t at) { return static_cast<unsigned char>(utf8[at]); };
    const auto within = [&](size_t at, unsigned low, unsigned high) {
        return at < utf8.size() && byte(at) >= low && byte(at) <= high;
    };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return within(1, 0x80, 0xBF) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        const bool second = within(1, lead == 0xE0 ? 0xA0U : 0x80U, lead == 0xED ? 0x9FU : 0xBFU);
        return second && within(2, 0x80, 0xBF) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const bool second = within(1, lead == 0xF0 ? 0x90U : 0x80U, lead == 0xF4 ? 0x8FU : 0xBFU);
        return second && within(2, 0x80, 0xBF) && within(3, 0x80, 0xBF) ? 4 : 0;
    }
    return 0;
}

}  // namespace

size_t utf8Length(WideStringView wide) noexcept {
    size_t bytes = 0;
    for (size_t at = 0; at < wide.size();) {
        const char32_t codePoint = nextCodePoint(wide, at);
        bytes += codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
    }
    return bytes;
}

char* writeUtf8(WideStringView wide, char* out) noexcept {
    size_t at = 0;
    while (at < wide.size()) {
        while (wide.size() - at >= kBlock && isAsciiBlock(wide.data() + at)) {
            narrowBlock(wide.data() + at, out);
            at += kBlock;
            out += kBlock;
        }
        const size_t pause = std::min(wide.size(), at + kPause);
        while (at < pause) {
            if (wide[at] < 0x80) {
                *out++ = byteOf(wide[at++]);
            } else {
                out = writeSequence(nextCodePoint(wide, at), out);
            }
        }
    }
    return out;
}

size_t wideLength(std::string_view utf8) noexcept {
    const char* in = utf8.data();
    const char* const end = in + utf8.size();
    size_t units = 0;
    while (in != end) {
        if (static_cast<size_t>(end - in) >= kBlock && isAsciiBlock(in)) {
            in += kBlock;
            units += kBlock;
        } else {
            // Every sequence is one unit, and one more where it has four bytes.
            const auto byte = static_cast<unsigned char>(*in++);
            units += (byte & 0xC0U) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
        }
    }
    return units;
}

WideChar* writeWide(std::string_view utf8, WideChar* out) noexcept {
    const char* in = utf8.data();
    const char* const end = in + utf8.size();
    while (in != end) {
        while (static_cast<size_t>(end - in) >= kBlock && isAsciiBlock(in)) {
            widenBlock(in, out);
            in += kBlock;
            out += kBlock;
        }
        const char* const pause = in + std::min(static_cast<size_t>(end - in), kPause);
        while (in < pause) {
            out = writeUnits(decodeSequence(in), out);
        }
    }
    return out;
}

size_t findUnpairedSurrogate(WideStringView wide) noexcept {
    size_t at = 0;
    while (at < wide.size()) {
        while (wide.size() - at >= kBlock && !hasSurrogates(wide.data() + at)) {
            at += kBlock;
        }
        const size_t pause = std::min(wide.size(), at + kPause);
        while (at < pause) {
            const size_t start = at;
            const char32_t codePoint = nextCodePoint(wide, at);
            if (isHighSurrogate(codePoint) || isLowSurrogate(codePoint)) {
                return start;
            }
        }
    }
    return WideStringView::npos;
}

size_t findIllFormedUtf8(std::string_view utf8) noexcept {
    size_t at = asciiPrefix(utf8);
    while (at < utf8.size()) {
        const size_t length = wellFormedSequence(utf8.substr(at));
        if (length == 0) {
            return at;
        }
        at += length;
        at += asciiPrefix(utf8.substr(at));
    }
    return std::string_view::npos;
}

bool isSameTextBeyondAscii(std::string_view utf8, WideStringView wide) noexcept {
    const char* in = utf8.data();
    const char* const end = in + utf8.size();
    size_t at = 0;
    while (in != end && at < wide.size()) {
        if (decodeSequence(in) != nextCodePoint(wide, at)) {
            return false;
        }
    }
    return in == end && at == wide.size();
}

void appendUtf8(WideString& wide, std::string_view utf8) {
    const size_t before = wide.size();
    wide.resize(before + wideLength(utf8));
    writeWide(utf8, wide.data() + before);
}

}  // namespace Orvel::Analytics::Text

namespace Orvel {

WideString toWide(std::string_view utf8) {
    const std::size_t fault = Analytics::Text::findIllFormedUtf8(utf8);
    if (fault != std::string_view::npos) {
        throw std::invalid_argument("ill-formed UTF-8 at byte " + std::to_string(fault));
    }
    WideString wide;
    wide.reserve(utf8.size());
    Analytics::Text::appendUtf8(wide, utf8);
    return wide;
}

std::string toUtf8(WideStringView wide) {
    const std::size_t fault = Analytics::Text::findUnpairedSurrogate(wide);
    if (fault != WideStringView::npos) {
        throw std::invalid_argument("unpaired surrogate at code unit " + std::to_string(fault));
    }
    std::string utf8(Analytics::Text::utf8Length(wide), '\0');
    Analytics::Text::writeUtf8(wide, utf8.data());
    return utf8;
}

}  // namespace Orvel
