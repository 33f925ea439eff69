#ifndef ORVEL_EVENTS_GUID_H
#define ORVEL_EVENTS_GUID_H

#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Events {

/// A new random GUID (RFC 4122, version 4) as 36 upper-case characters without braces.
WideString generateGuidString();

/// Whether a text is a GUID in braces, its hexadecimal digits in either case, and the platform
/// reads it as one.
bool isBracedGuid(const WideString& text);

}  // namespace Orvel::Analytics::Events

#endif
