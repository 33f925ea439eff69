#ifndef ORVEL_TEXT_BLOCKS_H
#define ORVEL_TEXT_BLOCKS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "orvel/analytics/text.h"

/// Text a block at a time: most of it comes in long runs of ASCII, for which compilers make a few
/// wide instructions of these loops. Each function reads and writes whole blocks.
namespace Orvel::Analytics::Text {

/// The units or bytes of a block.
inline constexpr std::size_t kBlock = 16;

inline bool isAsciiBlock(const WideChar* units) noexcept {
    std::array<WideChar, kBlock> block;
    std::memcpy(block.data(), units, sizeof block);
    std::uint16_t bits = 0;
    for (const WideChar unit : block) {
        bits = static_cast<std::uint16_t>(bits | unit);
    }
    return bits < 0x80;
}

inline bool isAsciiBlock(const char* bytes) noexcept {
    std::array<std::uint8_t, kBlock> block;
    std::memcpy(block.data(), bytes, sizeof block);
    std::uint8_t bits = 0;
    for (const std::uint8_t byte : block) {
        bits = static_cast<std::uint8_t>(bits | byte);
    }
    return bits < 0x80;
}

inline bool hasSurrogates(const WideChar* units) noexcept {
    std::array<WideChar, kBlock> block;
    std::memcpy(block.data(), units, sizeof block);
    std::uint16_t found = 0;
    for (const WideChar unit : block) {
        found = static_cast<std::uint16_t>(found | ((unit & 0xF800) == 0xD800));
    }
    return found != 0;
}

/// Whether a block is ASCII that JSON strings hold as it is (RFC 8259, section 7).
inline bool isPlainJsonBlock(const char* bytes) noexcept {
    std::array<std::uint8_t, kBlock> block;
    std::memcpy(block.data(), bytes, sizeof block);
    std::uint8_t found = 0;
    for (const std::uint8_t byte : block) {
        found = static_cast<std::uint8_t>(
            found | ((byte < 0x20) | (byte == '"') | (byte == '\\') | (byte >= 0x80)));
    }
    return found == 0;
}

inline void narrowBlock(const WideChar* units, char* out) noexcept {
    std::array<WideChar, kBlock> block;
    std::memcpy(block.data(), units, sizeof block);
    std::array<std::uint8_t, kBlock> narrow;
    for (std::size_t at = 0; at < kBlock; ++at) {
        narrow[at] = static_cast<std::uint8_t>(block[at]);
    }
    std::memcpy(out, narrow.data(), sizeof narrow);
}

inline void widenBlock(const char* bytes, WideChar* out) noexcept {
    std::array<std::uint8_t, kBlock> block;
    std::memcpy(block.data(), bytes, sizeof block);
    std::array<WideChar, kBlock> wide;
    for (std::size_t at = 0; at < kBlock; ++at) {
        wide[at] = block[at];
    }
    std::memcpy(out, wide.data(), sizeof wide);
}

}  // namespace Orvel::Analytics::Text

#endif
