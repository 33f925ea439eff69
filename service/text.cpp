#include "service/text.h"

#include <cstdint>

namespace Orvel::Service {

namespace {

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

void appendBytes(std::string& out, std::uint32_t point) {
    const auto trail = [point](unsigned shift) {
        return static_cast<char>(0x80 | ((point >> shift) & 0x3F));
    };
    if (point < 0x80) {
        out += static_cast<char>(point);
    } else if (point < 0x800) {
        out += static_cast<char>(0xC0 | (point >> 6));
        out += trail(0);
    } else if (point < 0x10000) {
        out += static_cast<char>(0xE0 | (point >> 12));
        out += trail(6);
        out += trail(0);
    } else {
        out += static_cast<char>(0xF0 | (point >> 18));
        out += trail(12);
        out += trail(6);
        out += trail(0);
    }
}

}  // namespace

std::optional<std::string> toUtf8(WideStringView text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
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
        appendBytes(out, point);
    }
    return out;
}

void appendAscii(WideString& text, std::string_view ascii) {
    text.append(ascii.begin(), ascii.end());
}

}  // namespace Orvel::Service
