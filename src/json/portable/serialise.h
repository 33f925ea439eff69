#ifndef ORVEL_JSON_PORTABLE_SERIALISE_H
#define ORVEL_JSON_PORTABLE_SERIALISE_H

#include <cstddef>

#include "json/portable/node.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Json {

/// How many code units a value takes as compact JSON text (RFC 8259).
std::size_t serialisedLength(const Node& value);

/// A value as compact JSON text. An unpaired surrogate stays as it is.
/// @throws std::bad_alloc
WideString serialise(const Node& value);

}  // namespace Orvel::Analytics::Json

#endif
