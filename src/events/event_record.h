#ifndef ORVEL_EVENTS_EVENT_RECORD_H
#define ORVEL_EVENTS_EVENT_RECORD_H

#include "json/json.h"
#include "orvel/analytics/data_class.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Events {

/// The record of one event: an object whose only member, named for the data class's identifier,
/// holds the event's values with "DT" and "V" set on them.
/// @param values the event's values, made in `document`; they become part of the record.
WideString eventRecord(Json::Document& document, Json::Object values,
                       const DataClass::BaseDataClass& dataClass, WideStringView versionTag);

}  // namespace Orvel::Analytics::Events

#endif
