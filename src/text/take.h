#ifndef ORVEL_TEXT_TAKE_H
#define ORVEL_TEXT_TAKE_H

#include <utility>

#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Text {

/// Takes a text over and leaves it empty, which a moved-from standard string need not be.
inline WideString take(WideString& text) noexcept { return std::exchange(text, {}); }

}  // namespace Orvel::Analytics::Text

#endif
