#include "fuzz/support/plain_frame.h"

namespace Orvel::Fuzz {
namespace {

constexpr std::uint64_t kLargestText = 8 * 1024;
constexpr std::uint64_t kLargestBody = std::uint64_t{1} << 30;

std::uint64_t number(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t index = size; index > 0; --index) {
        value = (value << 8) | static_cast<unsigned char>(bytes[at + index - 1]);
    }
    return value;
}

void append(std::string& bytes, std::uint64_t value, std::size_t size) {
    for (std::size_t index = 0; index < size; ++index) {
        bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * index)));
    }
}

/// The rows of the table of types.
bool isInTable(const PlainFrame& frame) {
    const bool isBare = frame.targetLength == 0 && frame.bodyLength == 0;
    switch (frame.type) {
        case kHello:
            return frame.id == 0 && frame.code == 0 && frame.targetLength == 0 &&
                   frame.bodyLength <= kLargestText;
        case kWelcome:
            return frame.id == 0 && frame.code <= kLargestBody && isBare;
        case kCommand:
            return frame.id != 0;
        case kReply:
            return frame.id != 0 && frame.code == 0 && frame.targetLength == 0;
        case kError:
            return frame.code != 0 && isBare;
        case kProgress:
            return frame.code == 0 && isBare;
        default:
            return false;
    }
}

}  // namespace

std::optional<PlainFrame> readPlainFrame(std::string_view bytes) {
    const std::uint64_t targetLength = number(bytes, 16, 4);
    const std::uint64_t bodyLength = number(bytes, 24, 8);
    const PlainFrame frame{static_cast<std::uint8_t>(number(bytes, 5, 1)),
                           static_cast<std::uint32_t>(number(bytes, 8, 4)),
                           static_cast<std::uint32_t>(number(bytes, 12, 4)), targetLength,
                           bodyLength};
    const bool isOurs = bytes.starts_with("ORVL") && number(bytes, 4, 1) == 1 &&
                        number(bytes, 6, 2) == kFrameHeader && number(bytes, 20, 4) == 0;
    const bool hasLengths = targetLength % 2 == 0 && targetLength <= kLargestText &&
                            bodyLength % 2 == 0 && bodyLength <= kLargestBody;
    return isOurs && hasLengths && isInTable(frame) ? std::optional(frame) : std::nullopt;
}

std::string plainFrameBytes(PlainFrameType type, std::uint32_t id, std::uint32_t code,
                            std::string_view body) {
    std::string bytes = "ORVL";
    append(bytes, 1, 1);
    append(bytes, type, 1);
    append(bytes, kFrameHeader, 2);
    append(bytes, id, 4);
    append(bytes, code, 4);
    append(bytes, 0, 4);
    append(bytes, 0, 4);
    append(bytes, body.size(), 8);
    return bytes.append(body);
}

}  // namespace Orvel::Fuzz
