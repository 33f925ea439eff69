#ifndef ORVEL_RELAY_FRAME_BYTES_H
#define ORVEL_RELAY_FRAME_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "orvel/relay/text.h"
#include "relay/wire/frame.h"

/// @file
/// Frames as bytes, for tests that play one of the two sides by hand.

namespace Orvel::Relay::Testing {

/// The bytes of a text as they travel.
inline std::string wireBytes(WideStringView text) {
    std::string bytes;
    for (const WideChar unit : text) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return bytes;
}

inline std::string headerBytes(const Wire::FrameHeader& header) {
    const Wire::HeaderBytes bytes = Wire::encode(header);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A frame whose lengths are those of its texts.
inline std::string frame(Wire::FrameType type, std::uint32_t id, std::uint32_t code = 0,
                         WideStringView target = {}, WideStringView body = {}) {
    const Wire::FrameHeader header{type, id, code, static_cast<std::uint32_t>(2 * target.size()),
                                   2 * body.size()};
    return headerBytes(header) + wireBytes(target) + wireBytes(body);
}

inline std::string helloFrame(WideStringView argument = {}) {
    return frame(Wire::FrameType::kHello, 0, 0, {}, argument);
}

inline std::string welcomeFrame(std::uint32_t largestBody = Wire::kLargestBody) {
    return frame(Wire::FrameType::kWelcome, 0, largestBody);
}

inline std::string commandFrame(std::uint32_t id, WideStringView body) {
    return frame(Wire::FrameType::kCommand, id, 0, ORVEL_RELAY_TEXT("TA"), body);
}

inline std::string replyFrame(std::uint32_t id, WideStringView body) {
    return frame(Wire::FrameType::kReply, id, 0, {}, body);
}

inline std::string errorFrame(std::uint32_t id, std::uint32_t status) {
    return frame(Wire::FrameType::kError, id, status);
}

inline std::string progressFrame(std::uint32_t id) { return frame(Wire::FrameType::kProgress, id); }

/// The frame with one byte of its header set.
inline std::string with(std::string frame, std::size_t at, unsigned char value) {
    return frame.replace(at, 1, 1, static_cast<char>(value));
}

}  // namespace Orvel::Relay::Testing

#endif
