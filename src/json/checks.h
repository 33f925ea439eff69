#ifndef ORVEL_JSON_CHECKS_H
#define ORVEL_JSON_CHECKS_H

#include "orvel/analytics/text.h"

/// What the layer refuses by itself, so that every backend refuses it.
namespace Orvel::Analytics::Json {

/// Raises for a text that must not reach a JSON engine: one with a byte order mark or an unpaired
/// surrogate.
void requireParsable(WideStringView text);

/// Raises for a number that JSON has no text for.
void requireFinite(double number);

}  // namespace Orvel::Analytics::Json

#endif
