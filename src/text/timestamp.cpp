#include "text/timestamp.h"

#include <array>
#include <ctime>

#include "text/local_time.h"

namespace Orvel::Analytics::Text {
namespace {

constexpr std::size_t kUsualLength = 15;

/// Appends a number that is not negative.
void appendNumber(WideString& text, std::int64_t number, std::size_t fewestDigits) {
    std::array<WideChar, 20> digits;
    std::size_t begin = digits.size();
    while (number > 0 || digits.size() - begin < fewestDigits) {
        digits[--begin] = static_cast<WideChar>('0' + number % 10);
        number /= 10;
    }
    text.append(digits.data() + begin, digits.size() - begin);
}

}  // namespace

WideString formatLocalTimestamp(std::int64_t time) {
    if (time <= 0) {
        return {};
    }
    const auto local = toLocalTime(time);
    if (!local) {
        return {};
    }
    // Written digit by digit: the C library's formatter takes longer than all the rest.
    WideString text;
    text.reserve(kUsualLength);
    appendNumber(text, std::int64_t{local->tm_year} + 1900, 4);
    appendNumber(text, local->tm_mon + 1, 2);
    appendNumber(text, local->tm_mday, 2);
    text += 'T';
    appendNumber(text, local->tm_hour, 2);
    appendNumber(text, local->tm_min, 2);
    appendNumber(text, local->tm_sec, 2);
    return text;
}

}  // namespace Orvel::Analytics::Text
