#ifndef ORVEL_SERVICE_JSON_PATH_H
#define ORVEL_SERVICE_JSON_PATH_H

#include <string>
#include <string_view>

namespace Orvel::Service {

/// Appends one member to a JSON path: `.name` for a name of ASCII letters, digits and underscores
/// that does not begin with a digit, `['name']` for any other. Of a name of more than 256 bytes of
/// UTF-8 it is the beginning, with an ellipsis.
void appendPathMember(std::string& path, std::string_view name);

}  // namespace Orvel::Service

#endif
