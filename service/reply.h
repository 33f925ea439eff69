#ifndef ORVEL_SERVICE_REPLY_H
#define ORVEL_SERVICE_REPLY_H

#include <vector>

#include "service/error_name.h"
#include "service/text.h"

namespace Orvel::Service {

/// The application's name and a token, with nothing between them.
WideString plainReply(WideStringView application, WideStringView token);

/// The application's name, a token, and a JSON text.
/// @throws std::invalid_argument when the text is ill-formed UTF-8.
WideString jsonReply(WideStringView application, WideStringView token, std::string_view json);

/// The application's name, a token, and a JSON object whose "Results" hold one error each.
WideString errorReply(WideStringView application, WideStringView token,
                      const std::vector<ErrorName>& errors);

}  // namespace Orvel::Service

#endif
