#ifndef ORVEL_TESTING_JSON_STRING_H
#define ORVEL_TESTING_JSON_STRING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Orvel::Analytics::Testing {

/// Appends a text as a string of JSON.
/// @param text UTF-8 or UTF-16, by its units.
template <typename Unit>
void appendJsonString(std::basic_string<Unit>& json, std::basic_string_view<Unit> text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    json += Unit{'"'};
    for (const Unit unit : text) {
        if (unit == Unit{'"'} || unit == Unit{'\\'}) {
            json += Unit{'\\'};
            json += unit;
        } else if (static_cast<std::uint32_t>(unit) < 0x20) {
            for (const char escape : std::string_view("\\u00")) {
                json += static_cast<Unit>(escape);
            }
            json += static_cast<Unit>(kDigits[static_cast<std::size_t>(unit) >> 4]);
            json += static_cast<Unit>(kDigits[static_cast<std::size_t>(unit) & 0xF]);
        } else {
            json += unit;
        }
    }
    json += Unit{'"'};
}

}  // namespace Orvel::Analytics::Testing

#endif
