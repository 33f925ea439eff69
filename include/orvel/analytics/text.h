#ifndef ORVEL_ANALYTICS_TEXT_H
#define ORVEL_ANALYTICS_TEXT_H

#include <string>
#include <string_view>

#include "orvel/analytics/export.h"

/// @file
/// Wide text: every text at the library's boundary is a UTF-16 string, and every length is counted
/// in UTF-16 code units.

/// A wide string literal: `ORVEL_TEXT("name")` is `L"name"` on Windows and `u"name"` elsewhere.
#ifdef _WIN32
#define ORVEL_TEXT(literal) L##literal
#else
#define ORVEL_TEXT(literal) u##literal
#endif

namespace Orvel {

#ifdef _WIN32
/// One UTF-16 code unit: `wchar_t` on Windows, `char16_t` elsewhere.
using WideChar = wchar_t;
#else
/// One UTF-16 code unit: `wchar_t` on Windows, `char16_t` elsewhere.
using WideChar = char16_t;
#endif

/// UTF-16 text that owns its code units: `std::wstring` on Windows, `std::u16string` elsewhere.
using WideString = std::basic_string<WideChar>;

/// UTF-16 text that somebody else owns.
using WideStringView = std::basic_string_view<WideChar>;

/// Converts UTF-8 to UTF-16. Any thread; does not block.
/// @param utf8 well-formed UTF-8 (RFC 3629); it may be empty and may hold U+0000.
/// @return the same text, owned by the caller.
/// @throws std::invalid_argument naming the byte offset where the text is ill-formed.
/// @throws std::bad_alloc
/// @throws std::length_error when the text is longer than a string can be.
[[nodiscard]] ORVEL_ANALYTICS_EXPORT WideString toWide(std::string_view utf8);

/// Converts UTF-16 to UTF-8. Any thread; does not block.
/// @param wide well-formed UTF-16 (RFC 2781); it may be empty and may hold U+0000.
/// @return the same text, owned by the caller.
/// @throws std::invalid_argument naming the code unit offset of an unpaired surrogate.
/// @throws std::bad_alloc
/// @throws std::length_error when the text is longer than a string can be.
[[nodiscard]] ORVEL_ANALYTICS_EXPORT std::string toUtf8(WideStringView wide);

}  // namespace Orvel

#endif
