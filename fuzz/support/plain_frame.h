#ifndef ORVEL_FUZZ_PLAIN_FRAME_H
#define ORVEL_FUZZ_PLAIN_FRAME_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Frames once more, read as docs/relay-protocol.md has them.
namespace Orvel::Fuzz {

inline constexpr std::size_t kFrameHeader = 32;

enum PlainFrameType : std::uint8_t {
    kHello = 1,
    kWelcome = 2,
    kCommand = 3,
    kReply = 4,
    kError = 5,
    kProgress = 6
};

struct PlainFrame {
    std::uint8_t type = 0;
    std::uint32_t id = 0;
    std::uint32_t code = 0;
    std::size_t targetLength = 0;
    std::size_t bodyLength = 0;
};

/// The header at the beginning of the bytes, of which there are enough; nothing when the protocol
/// has no such header.
std::optional<PlainFrame> readPlainFrame(std::string_view bytes);

/// The bytes of a frame that has no target.
std::string plainFrameBytes(PlainFrameType type, std::uint32_t id, std::uint32_t code,
                            std::string_view body = {});

}  // namespace Orvel::Fuzz

#endif
