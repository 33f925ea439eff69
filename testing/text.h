#ifndef ORVEL_TESTING_TEXT_H
#define ORVEL_TESTING_TEXT_H

#include <string>
#include <string_view>

#include "orvel/analytics/text.h"

/// The two encodings of a test. The library's own conversions are not called, as on Windows its DLL
/// is linked to this one.
namespace Orvel::Analytics::Testing {

/// UTF-16 as UTF-8, with U+FFFD for every unpaired surrogate.
[[nodiscard]] std::string utf8Of(WideStringView wide);

/// ASCII as UTF-16.
[[nodiscard]] WideString wideOf(std::string_view ascii);

}  // namespace Orvel::Analytics::Testing

#endif
