#ifndef ORVEL_SERVICE_REGISTRATION_H
#define ORVEL_SERVICE_REGISTRATION_H

#include <string_view>

#include "service/data_class.h"

namespace Orvel::Service {

/// Reads a registration document: the texts "name", "id" and "version", and the array "fields" of
/// objects with the texts "id", "name", "nullable" and "type". Other members are allowed.
/// @throws Refusal MalformedJson when the text is no JSON object, MalformedDataclass when one of
///     those members is missing or of another type.
DataClass readRegistration(std::string_view document);

}  // namespace Orvel::Service

#endif
