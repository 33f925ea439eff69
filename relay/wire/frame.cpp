#include "relay/wire/frame.h"

#include <concepts>

namespace Orvel::Relay::Wire {
namespace {

// Where each field of the header begins.
constexpr std::size_t kMagicAt = 0;
constexpr std::size_t kVersionAt = 4;
constexpr std::size_t kTypeAt = 5;
constexpr std::size_t kHeaderLengthAt = 6;
constexpr std::size_t kIdAt = 8;
constexpr std::size_t kCodeAt = 12;
constexpr std::size_t kTargetLengthAt = 16;
constexpr std::size_t kFlagsAt = 20;
constexpr std::size_t kBodyLengthAt = 24;

// Compilers turn both loops into one move on a little-endian machine.
template <std::unsigned_integral T>
void put(std::byte* to, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        to[i] = static_cast<std::byte>((value >> (8 * i)) & 0xFF);
    }
}

template <std::unsigned_integral T>
T get(const std::byte* from) {
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        value = static_cast<T>(value | (static_cast<T>(from[i]) << (8 * i)));
    }
    return value;
}

bool isEven(std::uint64_t length) { return length % 2 == 0; }

// What a frame of each type may hold, whoever reads it.
bool suitsItsType(const FrameHeader& header) {
    const bool empty = header.targetLength == 0 && header.bodyLength == 0;
    switch (header.type) {
        case FrameType::kHello:
            return header.id == kGreetingId && header.code == 0 && header.targetLength == 0 &&
                   header.bodyLength <= kLargestGreeting;
        case FrameType::kWelcome:
            return header.id == kGreetingId && header.code <= kLargestBody && empty;
        case FrameType::kCommand:
            return header.id != kGreetingId;
        case FrameType::kReply:
            return header.id != kGreetingId && header.code == 0 && header.targetLength == 0;
        case FrameType::kError:
            return header.code != 0 && empty;
        case FrameType::kProgress:
            return header.code == 0 && empty;
    }
    return false;
}

}  // namespace

HeaderBytes encode(const FrameHeader& header) {
    HeaderBytes bytes;
    put<std::uint32_t>(&bytes[kMagicAt], kMagic);
    put<std::uint8_t>(&bytes[kVersionAt], kVersion);
    put<std::uint8_t>(&bytes[kTypeAt], static_cast<std::uint8_t>(header.type));
    put<std::uint16_t>(&bytes[kHeaderLengthAt], kHeaderSize);
    put<std::uint32_t>(&bytes[kIdAt], header.id);
    put<std::uint32_t>(&bytes[kCodeAt], header.code);
    put<std::uint32_t>(&bytes[kTargetLengthAt], header.targetLength);
    put<std::uint32_t>(&bytes[kFlagsAt], 0);
    put<std::uint64_t>(&bytes[kBodyLengthAt], header.bodyLength);
    return bytes;
}

std::optional<FrameHeader> decode(const std::byte* bytes) {
    if (get<std::uint32_t>(bytes + kMagicAt) != kMagic ||
        get<std::uint8_t>(bytes + kVersionAt) != kVersion ||
        get<std::uint16_t>(bytes + kHeaderLengthAt) != kHeaderSize ||
        get<std::uint32_t>(bytes + kFlagsAt) != 0) {
        return std::nullopt;
    }
    FrameHeader header;
    header.type = static_cast<FrameType>(get<std::uint8_t>(bytes + kTypeAt));
    header.id = get<std::uint32_t>(bytes + kIdAt);
    header.code = get<std::uint32_t>(bytes + kCodeAt);
    header.targetLength = get<std::uint32_t>(bytes + kTargetLengthAt);
    header.bodyLength = get<std::uint64_t>(bytes + kBodyLengthAt);
    if (!isEven(header.targetLength) || header.targetLength > kLargestTarget ||
        !isEven(header.bodyLength) || header.bodyLength > kLargestBody || !suitsItsType(header)) {
        return std::nullopt;
    }
    return header;
}

}  // namespace Orvel::Relay::Wire
