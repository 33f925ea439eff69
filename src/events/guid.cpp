#include "events/guid.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "events/guid_source.h"

namespace Orvel::Analytics::Events {
namespace {

constexpr bool isHexDigit(WideChar unit) {
    return (unit >= '0' && unit <= '9') || (unit >= 'a' && unit <= 'f') ||
           (unit >= 'A' && unit <= 'F');
}

bool hasBracedForm(WideStringView text) {
    // Every x stands for a hexadecimal digit.
    constexpr WideStringView kForm = ORVEL_TEXT("{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}");
    return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(),
                      [](WideChar unit, WideChar expected) {
                          return expected == 'x' ? isHexDigit(unit) : unit == expected;
                      });
}

}  // namespace

WideString generateGuidString() {
    const Guid guid = newGuid();
    std::array<char, 40> text;
    std::snprintf(text.data(), text.size(), "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                  guid.data1, guid.data2, guid.data3, guid.data4[0], guid.data4[1], guid.data4[2],
                  guid.data4[3], guid.data4[4], guid.data4[5], guid.data4[6], guid.data4[7]);
    return {text.begin(), std::find(text.begin(), text.end(), '\0')};
}

bool isBracedGuid(const WideString& text) { return hasBracedForm(text) && platformReadsGuid(text); }

}  // namespace Orvel::Analytics::Events
