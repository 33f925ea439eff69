#ifndef ORVEL_DATACLASS_VALIDATION_H
#define ORVEL_DATACLASS_VALIDATION_H

#include "json/json.h"
#include "orvel/analytics/data_class.h"
#include "orvel/analytics/result.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::DataClass {

/// Checks the values of an event against the fields of its data class, in their order; the first
/// field at fault decides. A field that the event lacks passes, and so does a member that is no
/// field. `getFields` is called once, and only for an event that has members.
/// @throws std::out_of_range when the length in a varchar type is not within 32 bits, and whatever
///     the JSON layer or `getFields` raises.
Emitters::AnalyticsResult validateValues(const Json::Object& values, BaseDataClass& dataClass);

/// The first run of ASCII digits in a type text; empty when there is none.
WideStringView firstDigits(WideStringView type) noexcept;

}  // namespace Orvel::Analytics::DataClass

#endif
