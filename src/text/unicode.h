#ifndef ORVEL_TEXT_UNICODE_H
#define ORVEL_TEXT_UNICODE_H

#include <cstddef>
#include <string_view>

#include "orvel/analytics/text.h"

/// The two Unicode encodings and the way between them.
///
/// Text that only the library sees is kept as generalised UTF-8: UTF-8 in which an unpaired
/// surrogate has the three bytes that its number would have, so that no code unit is ever lost.
namespace Orvel::Analytics::Text {

/// How many bytes `wide` takes as generalised UTF-8.
std::size_t utf8Length(WideStringView wide) noexcept;

/// Writes `wide` as generalised UTF-8 to `out`, which has room for it.
/// @return the end of what was written.
char* writeUtf8(WideStringView wide, char* out) noexcept;

/// The offset of the first unpaired surrogate, or `npos`.
std::size_t findUnpairedSurrogate(WideStringView wide) noexcept;

/// The offset of the first byte that does not belong to well-formed UTF-8, or `npos`.
std::size_t findIllFormedUtf8(std::string_view utf8) noexcept;

/// Appends generalised UTF-8, which the caller knows to be well-formed, to `wide`.
void appendUtf8(WideString& wide, std::string_view utf8);

}  // namespace Orvel::Analytics::Text

#endif
