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

// A step is cleared before it is received, which is cheap as long as it stays in the processor's
// cache meanwhile.
constexpr std::size_t kStep = std::size_t{256} * 1024;

// How many times as much as has arrived a text may take of the address space. Systems give memory
// to what is used of that, which is the step ahead; a text that has room need not move.
constexpr std::size_t kReserved = 16;

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
        const std::size_t wanted = std::min(length_, held + std::clamp(held, kFirstStep, kStep));
        if (wanted > text_.capacity() * sizeof(WideChar)) {
            text_.reserve(std::min(length_, kReserved * wanted) / sizeof(WideChar));
        }
        text_.resize(wanted / sizeof(WideChar));
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
