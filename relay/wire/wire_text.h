#ifndef ORVEL_WIRE_WIRE_TEXT_H
#define ORVEL_WIRE_WIRE_TEXT_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "orvel/relay/text.h"

/// @file
/// Texts as the bytes that travel: UTF-16LE, code unit for code unit. On a little-endian machine
/// these are the text's own bytes, and nothing is copied or converted.

namespace Orvel::Relay::Wire {

static_assert(sizeof(WideChar) == 2);

/// A text on its way out. It must outlive this object.
class OutgoingText {
  public:
    explicit OutgoingText(WideStringView text);

    std::span<const std::byte> bytes() const { return bytes_; }

  private:
    WideString swapped_;
    std::span<const std::byte> bytes_;
};

/// A text on its way in, of a length that the other side claims. It grows as bytes arrive, never
/// beyond the double of what has arrived, so that a claim alone costs no memory. It may have the
/// address space of more.
class IncomingText {
  public:
    /// @param length in bytes; even.
    explicit IncomingText(std::uint64_t length) : length_(static_cast<std::size_t>(length)) {}

    bool complete() const { return arrived_ == length_; }

    /// Where the next bytes go; empty only when the text is complete. Valid until the next call.
    std::span<std::byte> room();

    /// The first `count` bytes of `room` were filled.
    void arrived(std::size_t count) { arrived_ += count; }

    /// Takes what it needs from bytes that came along with a header.
    /// @return how many it took.
    std::size_t take(std::span<const std::byte> bytes);

    /// The complete text.
    WideString finish() &&;

  private:
    WideString text_;
    std::size_t length_;
    std::size_t arrived_ = 0;
};

}  // namespace Orvel::Relay::Wire

#endif
