#include "relay/wire/wire_text.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace Orvel::Relay::Wire {
namespace {

constexpr bool kSwaps = std::endian::native == std::endian::big;

// A first step that serves most texts whole, and is no loss when the rest never comes.
constexpr std::size_t kFirstStep = std::size_t{64} * 1024;

// Not needed on most machines.
[[maybe_unused]] void swapBytes(WideString& text) {
    for (WideChar& unit : text) {
        const auto value = static_cast<std::uint16_t>(unit);
        unit = static_cast<WideChar>(static_cast<std::uint16_t>((value << 8) | (value >> 8)));
    }
}

}  // namespace

OutgoingText::OutgoingText(WideStringView text) {
    if constexpr (kSwaps) {
        swapped_ = text;
        swapBytes(swapped_);
        text = swapped_;
    }
    bytes_ = std::as_bytes(std::span(text.data(), text.size()));
}

std::span<std::byte> IncomingText::room() {
    const std::size_t held = text_.size() * sizeof(WideChar);
    if (arrived_ == held) {
        const std::size_t step = std::max(kFirstStep, held);
        text_.resize(std::min(length_, held + step) / sizeof(WideChar));
    }
    return std::as_writable_bytes(std::span(text_)).subspan(arrived_);
}

std::size_t IncomingText::take(std::span<const std::byte> bytes) {
    std::size_t taken = 0;
    while (taken < bytes.size() && !complete()) {
        const std::span<std::byte> to = room();
        const std::size_t count = std::min(to.size(), bytes.size() - taken);
        std::memcpy(to.data(), bytes.data() + taken, count);
        arrived(count);
        taken += count;
    }
    return taken;
}

WideString IncomingText::finish() && {
    if constexpr (kSwaps) {
        swapBytes(text_);
    }
    return std::move(text_);
}

}  // namespace Orvel::Relay::Wire
