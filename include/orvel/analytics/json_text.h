#ifndef ORVEL_ANALYTICS_JSON_TEXT_H
#define ORVEL_ANALYTICS_JSON_TEXT_H

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "orvel/analytics/text.h"

/// @file
/// JSON texts of single values (RFC 8259), for typed events. An application has no need of it.

/// @namespace Orvel::Analytics::TypedEvents::JsonText
/// What the values are written with.

namespace Orvel::Analytics::TypedEvents::JsonText {

/// No character: what stands at the beginning of a text is not well-formed.
inline constexpr std::uint32_t kIllFormed = 0xFFFFFFFF;

/// Takes the first character off a text in UTF-8 (RFC 3629) that is not empty.
/// @return its code point, or `kIllFormed`, and nothing is taken.
constexpr std::uint32_t takeCharacter(std::string_view& text) noexcept {
    constexpr std::array<std::uint32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    const auto byte = [&text](std::size_t at) {
        return std::uint32_t{static_cast<unsigned char>(text[at])};
    };
    const std::uint32_t lead = byte(0);
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if ((lead >= 0x80 && lead < 0xC0) || lead >= 0xF8 || size > text.size()) {
        return kIllFormed;
    }
    std::uint32_t point = size == 1 ? lead : lead & (0x7FU >> size);
    for (std::size_t at = 1; at < size; ++at) {
        if ((byte(at) & 0xC0U) != 0x80U) {
            return kIllFormed;
        }
        point = (point << 6U) | (byte(at) & 0x3FU);
    }
    const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
    if (point < kSmallest[size] || point > 0x10FFFF || isSurrogate) {
        return kIllFormed;
    }
    text.remove_prefix(size);
    return point;
}

/// The same for a text in UTF-16.
constexpr std::uint32_t takeCharacter(WideStringView& text) noexcept {
    const auto unit = [&text](std::size_t at) { return std::uint32_t{text[at]}; };
    std::uint32_t point = unit(0);
    std::size_t size = 1;
    if (point >= 0xD800 && point <= 0xDFFF) {
        if (point >= 0xDC00 || text.size() < 2 || unit(1) < 0xDC00 || unit(1) > 0xDFFF) {
            return kIllFormed;
        }
        point = 0x10000 + ((point - 0xD800) << 10U) + (unit(1) - 0xDC00);
        size = 2;
    }
    text.remove_prefix(size);
    return point;
}

/// What follows the backslash of a character's escape, `u` where its code follows; 0 for a
/// character without an escape.
constexpr char escapeOf(std::uint32_t point) noexcept {
    switch (point) {
        case '"':
        case '\\':
            return static_cast<char>(point);
        case '\b':
            return 'b';
        case '\f':
            return 'f';
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
        default:
            return point < 0x20 ? 'u' : '\0';
    }
}

/// The code units of UTF-16 that a character takes in a string of JSON.
constexpr std::size_t lengthOf(std::uint32_t point) noexcept {
    const char escape = escapeOf(point);
    return escape == 'u' ? 6 : escape != '\0' || point >= 0x10000 ? 2 : 1;
}

/// Not to be called while a program is compiled, so that a compiler that has to refuses a literal
/// and names this function as the reason.
inline void thisLiteralIsLongerThanItsFieldAllows() noexcept {}
/// The same for another reason.
inline void thisLiteralIsNotWellFormed() noexcept {}

/// Refuses a literal while the program is compiled.
template <typename Char>
constexpr void requireLiteral(std::basic_string_view<Char> literal, std::size_t longest) {
    std::size_t length = 0;
    while (!literal.empty()) {
        const std::uint32_t point = takeCharacter(literal);
        if (point == kIllFormed) {
            thisLiteralIsNotWellFormed();
            return;
        }
        length += lengthOf(point);
    }
    if (length > longest) {
        thisLiteralIsLongerThanItsFieldAllows();
    }
}

/// Appends a character to a string of JSON.
inline void append(WideString& json, std::uint32_t point) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const char escape = escapeOf(point);
    if (escape != '\0') {
        json += ORVEL_TEXT('\\');
        json += static_cast<WideChar>(escape);
        if (escape == 'u') {
            json += ORVEL_TEXT("00");
            json += static_cast<WideChar>(kDigits[point >> 4U]);
            json += static_cast<WideChar>(kDigits[point & 0xFU]);
        }
    } else if (point >= 0x10000) {
        json += static_cast<WideChar>(0xD800 + ((point - 0x10000) >> 10U));
        json += static_cast<WideChar>(0xDC00 + (point & 0x3FFU));
    } else {
        json += static_cast<WideChar>(point);
    }
}

/// A text as a string of JSON.
/// @throws std::invalid_argument naming the place where the text is not well-formed.
template <typename Char>
WideString string(std::basic_string_view<Char> text) {
    const std::size_t size = text.size();
    WideString json(1, ORVEL_TEXT('"'));
    json.reserve(size + 2);
    while (!text.empty()) {
        const std::uint32_t point = takeCharacter(text);
        if (point == kIllFormed) {
            throw std::invalid_argument("The text is not well-formed at " +
                                        std::string(sizeof(Char) == 1 ? "byte " : "code unit ") +
                                        std::to_string(size - text.size()));
        }
        append(json, point);
    }
    json += ORVEL_TEXT('"');
    return json;
}

/// A text of ASCII as it is.
inline WideString ascii(std::string_view text) { return {text.begin(), text.end()}; }

/// A number, written so that it is read back unchanged.
/// @throws std::invalid_argument when it is infinite or no number.
template <typename T>
requires(std::integral<T> || std::floating_point<T>) WideString number(T number) {
    if constexpr (std::floating_point<T>) {
        if (!std::isfinite(number)) {
            throw std::invalid_argument("JSON has no text for a number that is not finite");
        }
    }
    // No finite number takes more, a long double included.
    std::array<char, 64> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return ascii(
        std::string_view(digits.data(), static_cast<std::size_t>(written.ptr - digits.data())));
}

}  // namespace Orvel::Analytics::TypedEvents::JsonText

#endif
