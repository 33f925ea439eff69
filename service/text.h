#ifndef ORVEL_SERVICE_TEXT_H
#define ORVEL_SERVICE_TEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "orvel/relay/text.h"

/// @file
/// Commands and replies are UTF-16; what the service reads and stores is UTF-8.

namespace Orvel::Service {

using Relay::WideChar;
using Relay::WideString;
using Relay::WideStringView;

/// Converts to UTF-8; nothing when the text holds an unpaired surrogate. U+0000 is kept.
std::optional<std::string> toUtf8(WideStringView text);

/// Converts to UTF-16; nothing when the text is ill-formed UTF-8. U+0000 is kept.
std::optional<WideString> toUtf16(std::string_view text);

/// Appends a text of ASCII characters.
void appendAscii(WideString& text, std::string_view ascii);

}  // namespace Orvel::Service

#endif
