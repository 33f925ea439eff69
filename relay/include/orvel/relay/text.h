#ifndef ORVEL_RELAY_TEXT_H
#define ORVEL_RELAY_TEXT_H

#include <string>
#include <string_view>

/// @file
/// The relay's texts are UTF-16, handed on code unit for code unit: unpaired surrogates and U+0000
/// included.

namespace Orvel::Relay {

#ifdef _WIN32
/// One UTF-16 code unit.
using WideChar = wchar_t;
/// A literal of it, or of text made of it: `ORVEL_RELAY_TEXT('x')`, `ORVEL_RELAY_TEXT("text")`.
#define ORVEL_RELAY_TEXT(literal) L##literal
#else
/// One UTF-16 code unit.
using WideChar = char16_t;
/// A literal of it, or of text made of it: `ORVEL_RELAY_TEXT('x')`, `ORVEL_RELAY_TEXT("text")`.
#define ORVEL_RELAY_TEXT(literal) u##literal
#endif

/// UTF-16 text that owns its code units.
using WideString = std::basic_string<WideChar>;

/// UTF-16 text that somebody else owns.
using WideStringView = std::basic_string_view<WideChar>;

}  // namespace Orvel::Relay

#endif
