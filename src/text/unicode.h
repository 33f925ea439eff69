#ifndef ORVEL_TEXT_UNICODE_H
#define ORVEL_TEXT_UNICODE_H

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "orvel/analytics/text.h"

/// The two Unicode encodings and the way between them.
///
/// Text that only the library sees is kept as generalised UTF-8: UTF-8 in which an unpaired
/// surrogate has the three bytes that its number would have, so that no code unit is ever lost.
namespace Orvel::Analytics::Text {

/// How many bytes `wide` takes as generalised UTF-8.
std::size_t utf8Length(WideStringView wide) noexcept;

/// Writes `wide` as generalised UTF-8 to `out`, which has room for it.
/// @return the end of what was written.
char* writeUtf8(WideStringView wide, char* out) noexcept;

/// The offset of the first unpaired surrogate, or `npos`.
std::size_t findUnpairedSurrogate(WideStringView wide) noexcept;

/// The offset of the first byte that does not belong to well-formed UTF-8, or `npos`.
std::size_t findIllFormedUtf8(std::string_view utf8) noexcept;

/// How many code units generalised UTF-8 takes as UTF-16.
std::size_t wideLength(std::string_view utf8) noexcept;

/// Writes generalised UTF-8, which the caller knows to be well-formed, as UTF-16 to `out`, which
/// has room for it.
/// @return the end of what was written.
WideChar* writeWide(std::string_view utf8, WideChar* out) noexcept;

/// Decodes the sequence at `in`, which moves past it; the caller knows it to be well-formed
/// generalised UTF-8.
inline char32_t decodeSequence(const char*& in) noexcept {
    const auto next = [&in] { return static_cast<unsigned char>(*in++); };
    const char32_t lead = next();
    if (lead < 0x80) {
        return lead;
    }
    const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t codePoint = lead & (0x3FU >> more);
    for (int i = 0; i < more; ++i) {
        codePoint = (codePoint << 6) | (next() & 0x3FU);
    }
    return codePoint;
}

/// Writes a code point, an unpaired surrogate's number included, as one or two code units.
/// @return the end of what was written.
inline WideChar* writeUnits(char32_t codePoint, WideChar* out) noexcept {
    if (codePoint < 0x10000) {
        *out++ = static_cast<WideChar>(codePoint);
    } else {
        *out++ = static_cast<WideChar>(0xD7C0 + (codePoint >> 10));
        *out++ = static_cast<WideChar>(0xDC00 + (codePoint & 0x3FF));
    }
    return out;
}

/// `isSameText` for texts that do not begin with ASCII.
bool isSameTextBeyondAscii(std::string_view utf8, WideStringView wide) noexcept;

/// Whether generalised UTF-8 and UTF-16 are the same code units.
inline bool isSameText(std::string_view utf8, WideStringView wide) noexcept {
    const std::size_t shorter = std::min(utf8.size(), wide.size());
    for (std::size_t at = 0; at < shorter; ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        if (byte >= 0x80 && wide[at] >= 0x80) {
            return isSameTextBeyondAscii(utf8.substr(at), wide.substr(at));
        }
        if (byte != wide[at]) {
            return false;
        }
    }
    return utf8.size() == wide.size();
}

/// Appends generalised UTF-8, which the caller knows to be well-formed, to `wide`.
void appendUtf8(WideString& wide, std::string_view utf8);

}  // namespace Orvel::Analytics::Text

#endif
