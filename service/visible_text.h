#ifndef ORVEL_SERVICE_VISIBLE_TEXT_H
#define ORVEL_SERVICE_VISIBLE_TEXT_H

#include <string>
#include <string_view>

namespace Orvel::Service {

/// A text in which nothing can steer a terminal: control characters, line separators and the
/// characters that change the direction of writing are written as JSON escapes. A JSON text on one
/// line keeps its meaning.
std::string visibleText(std::string_view text);

/// A JSON text on one line, with the same meaning: line ends and tabs, which can only stand between
/// its values, become blanks.
std::string singleLine(std::string_view json);

}  // namespace Orvel::Service

#endif
