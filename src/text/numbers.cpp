#include "text/numbers.h"

#include <limits>
#include <stdexcept>

namespace Orvel::Analytics::Text {
namespace {

constexpr bool isSpace(WideChar unit) { return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D); }
constexpr bool isDigit(WideChar unit) { return unit >= 0x30 && unit <= 0x39; }

struct Messages {
    const char* invalid;
    const char* outOfRange;
};

template <typename Integer>
Integer toInteger(WideStringView text, const Messages& messages) {
    using Limits = std::numeric_limits<Integer>;
    std::size_t at = 0;
    while (at < text.size() && isSpace(text[at])) {
        ++at;
    }
    const bool signGiven = at < text.size() && (text[at] == '-' || text[at] == '+');
    const bool negative = signGiven && text[at] == '-';
    at += signGiven ? 1 : 0;
    if (at == text.size() || !isDigit(text[at])) {
        throw std::invalid_argument(messages.invalid);
    }
    // Counted downwards, because the negative half of the range is the larger one.
    Integer value = 0;
    for (; at < text.size() && isDigit(text[at]); ++at) {
        const auto digit = static_cast<Integer>(text[at] - 0x30);
        if (value < Limits::min() / 10 || value * 10 < Limits::min() + digit) {
            throw std::out_of_range(messages.outOfRange);
        }
        value = static_cast<Integer>(value * 10 - digit);
    }
    if (!negative && value == Limits::min()) {
        throw std::out_of_range(messages.outOfRange);
    }
    return negative ? value : static_cast<Integer>(-value);
}

}  // namespace

std::int32_t toInt32(WideStringView text) {
    return toInteger<std::int32_t>(text, {"invalid stoi argument", "stoi argument out of range"});
}

std::int64_t toInt64(WideStringView text) {
    return toInteger<std::int64_t>(text, {"invalid stoll argument", "stoll argument out of range"});
}

}  // namespace Orvel::Analytics::Text
