#ifndef ORVEL_JSON_PARSING_H
#define ORVEL_JSON_PARSING_H

#include <cstddef>
#include <cstdint>

#include "json/json.h"
#include "support/raised_status.h"

namespace Orvel::Analytics::Json {

/// The status that parsing the text raises; 0 when it raises nothing.
inline std::uint32_t parseStatus(WideStringView text) {
    Document document;
    return TestSupport::raisedStatus([&] { static_cast<void>(document.parseObject(text)); });
}

/// The text of what was parsed.
inline WideString reserialised(WideStringView text) {
    Document document;
    return document.parseObject(text).stringify();
}

/// An object of so many levels.
inline WideString nested(std::size_t depth) {
    WideString text = ORVEL_TEXT("{\"a\":");
    text.append(depth - 1, '[').append(depth - 1, ']');
    return text + ORVEL_TEXT("}");
}

}  // namespace Orvel::Analytics::Json

#endif
