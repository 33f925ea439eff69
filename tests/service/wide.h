#ifndef ORVEL_SERVICE_TESTS_WIDE_H
#define ORVEL_SERVICE_TESTS_WIDE_H

#include <string>
#include <string_view>

#include "orvel/relay/text.h"

namespace Orvel::Service {

/// UTF-16 of a UTF-8 text that is known to be well-formed.
inline Relay::WideString wide(std::string_view text) {
    Relay::WideString out;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int trailing = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        char32_t point = trailing == 0 ? lead : lead & (0x3FU >> trailing);
        for (int k = 0; k < trailing; ++k) {
            point = (point << 6) | (static_cast<unsigned char>(text[i++]) & 0x3FU);
        }
        if (point < 0x10000) {
            out += static_cast<Relay::WideChar>(point);
        } else {
            out += static_cast<Relay::WideChar>(0xD7C0 + (point >> 10));
            out += static_cast<Relay::WideChar>(0xDC00 + (point & 0x3FF));
        }
    }
    return out;
}

}  // namespace Orvel::Service

#endif
