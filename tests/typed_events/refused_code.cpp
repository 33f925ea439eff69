/// One line of code, which the compiler is to refuse, after code that it is to take.

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
    ORVEL_LINE;
}
