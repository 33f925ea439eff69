#ifndef ORVEL_WIRE_FRAME_H
#define ORVEL_WIRE_FRAME_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/// @file
/// The header that begins every frame between client and server, and the limits of a frame.

namespace Orvel::Relay::Wire {

inline constexpr std::size_t kHeaderSize = 32;
/// The bytes "ORVL".
inline constexpr std::uint32_t kMagic = 0x4C56524F;
inline constexpr std::uint8_t kVersion = 1;

/// Limits in bytes. A server announces its own largest body, which is at most this one.
inline constexpr std::uint32_t kLargestTarget = 8 * 1024;
inline constexpr std::uint32_t kLargestGreeting = 8 * 1024;
inline constexpr std::uint32_t kLargestBody = std::uint32_t{1} << 30;

/// The id of the greeting's frames; commands are numbered from 1.
inline constexpr std::uint32_t kGreetingId = 0;

/// The number of the next command: they begin again behind the last, without the greeting's.
constexpr std::uint32_t idAfter(std::uint32_t id) { return id == UINT32_MAX ? 1 : id + 1; }

enum class FrameType : std::uint8_t {
    kHello = 1,     ///< client: opens the conversation; the body is its argument
    kWelcome = 2,   ///< server: the code is the largest body that it takes and gives
    kCommand = 3,   ///< client: target, body, and an argument as code
    kReply = 4,     ///< server: the body is the reply to a command
    kError = 5,     ///< server: the code is a status, in place of a welcome or a reply
    kProgress = 6,  ///< server: still working
};

/// What a header says, without what is the same in every header. Lengths are bytes.
struct FrameHeader {
    FrameType type = FrameType::kHello;
    std::uint32_t id = 0;
    std::uint32_t code = 0;
    std::uint32_t targetLength = 0;
    std::uint64_t bodyLength = 0;

    bool operator==(const FrameHeader&) const = default;
};

using HeaderBytes = std::array<std::byte, kHeaderSize>;

HeaderBytes encode(const FrameHeader& header);

/// Reads a header from `kHeaderSize` bytes.
/// @return nothing when these are no header of this protocol, or one that a frame of its type
///     cannot have. A header returned is within the limits above.
std::optional<FrameHeader> decode(const std::byte* bytes);

}  // namespace Orvel::Relay::Wire

#endif
