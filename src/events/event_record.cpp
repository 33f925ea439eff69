#include "events/event_record.h"

#include "text/timestamp.h"

namespace Orvel::Analytics::Events {

WideString eventRecord(Json::Document& document, Json::Object values,
                       const DataClass::BaseDataClass& dataClass, WideStringView versionTag) {
    Json::Object record = document.newObject();
    values.setNamedValue(ORVEL_TEXT("DT"),
                         document.stringValue(Text::formatLocalTimestamp(dataClass.dateTime)));
    values.setNamedValue(ORVEL_TEXT("V"), document.stringValue(versionTag));
    record.setNamedValue(dataClass.id, values);
    return record.stringify();
}

}  // namespace Orvel::Analytics::Events
