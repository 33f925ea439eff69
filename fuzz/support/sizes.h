#ifndef ORVEL_FUZZ_SIZES_H
#define ORVEL_FUZZ_SIZES_H

#include <algorithm>
#include <charconv>
#include <vector>

#include "fuzz/support/input.h"

namespace Orvel::Fuzz {

/// A line of numbers: how many bytes arrive at a time, again and again. At least one number, each
/// at least 1.
inline std::vector<std::size_t> readSizes(std::string_view line) {
    std::vector<std::size_t> sizes;
    for (Input numbers(line); !numbers.empty();) {
        const std::string_view digits = numbers.until(' ');
        std::uint16_t size = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), size);
        sizes.push_back(std::max<std::size_t>(size, 1));
    }
    if (sizes.empty()) {
        sizes.push_back(1);
    }
    return sizes;
}

}  // namespace Orvel::Fuzz

#endif
