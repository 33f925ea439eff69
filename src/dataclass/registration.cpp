#include "dataclass/registration.h"

#include "json/json.h"

namespace Orvel::Analytics::DataClass {

WideString registrationDocument(BaseDataClass& dataClass) {
    Json::Document document;
    Json::Object registration = document.newObject();
    Json::Array fields = document.newArray();
    registration.setNamedValue(ORVEL_TEXT("name"), document.stringValue(dataClass.name));
    registration.setNamedValue(ORVEL_TEXT("id"), document.stringValue(dataClass.id));
    registration.setNamedValue(ORVEL_TEXT("version"), document.stringValue(dataClass.version));
    for (const DataClassFieldInfo& info : dataClass.getFields()) {
        Json::Object field = document.newObject();
        field.setNamedValue(ORVEL_TEXT("id"), document.stringValue(info.id));
        field.setNamedValue(ORVEL_TEXT("name"), document.stringValue(info.name));
        field.setNamedValue(ORVEL_TEXT("nullable"), document.stringValue(info.nullable));
        field.setNamedValue(ORVEL_TEXT("type"), document.stringValue(info.type));
        fields.append(field);
    }
    registration.setNamedValue(ORVEL_TEXT("fields"), fields);
    return registration.stringify();
}

}  // namespace Orvel::Analytics::DataClass
