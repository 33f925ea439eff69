#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "support/stand_in_runtime/json_text.h"

namespace Orvel::StandIn {
namespace {

/// The letter of a two-character escape, or 0.
wchar_t shortEscape(wchar_t unit) {
    switch (unit) {
        case L'"':
        case L'\\':
            return unit;
        case L'\b':
            return L'b';
        case L'\f':
            return L'f';
        case L'\n':
            return L'n';
        case L'\r':
            return L'r';
        case L'\t':
            return L't';
        default:
            return 0;
    }
}

}  // namespace

void writeString(std::wstring& out, std::wstring_view text) {
    constexpr std::wstring_view kHexDigits = L"0123456789abcdef";
    out += L'"';
    for (const wchar_t unit : text) {
        if (const wchar_t letter = shortEscape(unit)) {
            out += L'\\';
            out += letter;
        } else if (unit < 0x20) {
            out += L"\\u00";
            out += kHexDigits[static_cast<std::size_t>(unit) / 16];
            out += kHexDigits[static_cast<std::size_t>(unit) % 16];
        } else {
            out += unit;
        }
    }
    out += L'"';
}

void writeNumber(std::wstring& out, double number) {
    constexpr double kFirstWithExponent = 1e21;
    const bool isWhole = std::abs(number) < kFirstWithExponent && std::trunc(number) == number;
    std::array<char, 32> text;
    const auto result = isWhole ? std::to_chars(text.data(), text.data() + text.size(), number,
                                                std::chars_format::fixed)
                                : std::to_chars(text.data(), text.data() + text.size(), number);
    out.append(text.data(), result.ptr);
}

}  // namespace Orvel::StandIn
