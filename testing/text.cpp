#include "testing/text.h"

namespace Orvel::Analytics::Testing {
namespace {

bool isLeading(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isTrailing(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

void append(std::string& utf8, char32_t codePoint) {
    const auto put = [&utf8](char32_t byte) { utf8 += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        put(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6));
    } else {
        if (codePoint < 0x10000) {
            put(0xE0 | (codePoint >> 12));
        } else {
            put(0xF0 | (codePoint >> 18));
            put(0x80 | ((codePoint >> 12) & 0x3F));
        }
        put(0x80 | ((codePoint >> 6) & 0x3F));
    }
    put(0x80 | (codePoint & 0x3F));
}

}  // namespace

std::string utf8Of(WideStringView wide) {
    constexpr char32_t kReplacement = 0xFFFD;
    std::string utf8;
    utf8.reserve(wide.size());
    for (std::size_t at = 0; at < wide.size(); ++at) {
        const char32_t unit = wide[at];
        const char32_t next = at + 1 < wide.size() ? wide[at + 1] : 0;
        if (isLeading(unit) && isTrailing(next)) {
            append(utf8, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++at;
        } else {
            append(utf8, isLeading(unit) || isTrailing(unit) ? kReplacement : unit);
        }
    }
    return utf8;
}

WideString wideOf(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace Orvel::Analytics::Testing
