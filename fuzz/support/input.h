#ifndef ORVEL_FUZZ_INPUT_H
#define ORVEL_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace Orvel::Fuzz {

/// The bytes of one input, taken from the front. A target reads its settings first, most of them as
/// lines, so that inputs can be written by hand.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size)
        : rest_(reinterpret_cast<const char*>(data), size) {}
    explicit Input(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool empty() const { return rest_.empty(); }

    /// The bytes up to the next separator, which is taken too; all when there is none.
    std::string_view until(char separator);
    std::string_view line() { return until('\n'); }
    std::string_view rest() { return std::exchange(rest_, {}); }

  private:
    std::string_view rest_;
};

/// Any bytes as UTF-16, in such a way that any code units can come of it: UTF-8 is converted, that
/// of unpaired surrogates too, and every other byte is the code unit of its own number.
std::u16string wideOf(std::string_view bytes);

}  // namespace Orvel::Fuzz

#endif
