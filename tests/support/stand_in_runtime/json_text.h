#ifndef ORVEL_STAND_IN_RUNTIME_JSON_TEXT_H
#define ORVEL_STAND_IN_RUNTIME_JSON_TEXT_H

#include <string>
#include <string_view>

#include "support/stand_in_runtime/com_object.h"

namespace Orvel::StandIn {

struct Node;

/// Appends a JSON string that holds `text` code unit for code unit.
void writeString(std::wstring& out, std::wstring_view text);

/// Appends a number: whole ones without an exponent as far as people write them so.
void writeNumber(std::wstring& out, double number);

/// Parses the JSON text of one value.
/// @return the platform's status; `value` is set when it is S_OK.
HRESULT parse(std::wstring_view text, Reference<Node>& value);

}  // namespace Orvel::StandIn

#endif
