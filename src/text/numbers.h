#ifndef ORVEL_TEXT_NUMBERS_H
#define ORVEL_TEXT_NUMBERS_H

#include <cstdint>

#include "orvel/analytics/text.h"

/// Numbers read from the start of a text: white space of the C locale is skipped, then come an
/// optional sign and ASCII digits; what follows the digits is ignored.
namespace Orvel::Analytics::Text {

/// @throws std::invalid_argument "invalid stoi argument" when no digit was read.
/// @throws std::out_of_range "stoi argument out of range" beyond 32 bits.
std::int32_t toInt32(WideStringView text);

/// @throws std::invalid_argument "invalid stoll argument" when no digit was read.
/// @throws std::out_of_range "stoll argument out of range" beyond 64 bits.
std::int64_t toInt64(WideStringView text);

}  // namespace Orvel::Analytics::Text

#endif
