/// Code that the compiler is to take and, where ORVEL_REFUSED is defined, code that it is to
/// refuse: every line there says, as a regular expression, what the compiler's message has.

#include <cstdint>
#include <string>
#include <string_view>

#include "every_type.h"

using corpus::Orvel::EveryTypeEvent;

void build() {
    EveryTypeEvent event({.text = "x", .count = 1, .flag = true});
    event.setOtherText("hello").setOtherText("📝📝x").setOtherText(ORVEL_TEXT("hello"));
    const char array[] = "not a literal";
    event.setText(std::string_view(array));
    event.setCount(std::int16_t{1});
#ifdef ORVEL_REFUSED
    // clang-format off
    event.setOtherText("sixsix");              // Refused: thisLiteralIsLongerThanItsFieldAllows
    event.setOtherText("\"hi\"x");             // Refused: thisLiteralIsLongerThanItsFieldAllows
    event.setOtherText(ORVEL_TEXT("sixsix"));  // Refused: thisLiteralIsLongerThanItsFieldAllows
    event.setOtherText("\xff");                // Refused: thisLiteralIsNotWellFormed
    event.setCount(std::int64_t{1});           // Refused: delete
    event.setCount(1.5);                       // Refused: delete
    event.setCount(true);                      // Refused: delete
    event.setOtherText(nullptr);               // Refused: nullptr|no matching|no viable|could not convert
    EveryTypeEvent other({.text = "x", .flag = true});  // Refused: no matching|count
    // clang-format on
#endif
}
