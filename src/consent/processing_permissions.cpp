#include "orvel/analytics/processing_permissions.h"

#include "json/json.h"

using Orvel::WideString;
namespace Json = Orvel::Analytics::Json;

WideString ProcessingPermissions::ToJson() const {
    Json::Document document;
    Json::Object permissions = document.newObject();
    permissions.setNamedValue(ORVEL_TEXT("marketing"),
                              document.stringValue(getPermissionValueStr(marketing)));
    permissions.setNamedValue(ORVEL_TEXT("support"),
                              document.stringValue(getPermissionValueStr(support)));
    permissions.setNamedValue(ORVEL_TEXT("product_enhancement"),
                              document.stringValue(getPermissionValueStr(productEnhancement)));
    return permissions.stringify();
}

// Taken by value, as every reader of the library takes its text.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
ProcessingPermissions* ProcessingPermissions::FromJson(WideString json) {
    Json::Document document;
    const Json::Object permissions = document.parseObject(json);
    marketing = getPermissionValueType(permissions.getNamedString(ORVEL_TEXT("marketing")));
    productEnhancement =
        getPermissionValueType(permissions.getNamedString(ORVEL_TEXT("product_enhancement")));
    support = getPermissionValueType(permissions.getNamedString(ORVEL_TEXT("support")));
    return this;
}

WideString ProcessingPermissions::getPermissionValueStr(ProcessingPermissionValue value) {
    switch (value) {
        case ProcessingPermissionValue::Accepted:
            return ORVEL_TEXT("Accepted");
        case ProcessingPermissionValue::Rejected:
            return ORVEL_TEXT("Rejected");
        default:
            return ORVEL_TEXT("Unknown");
    }
}

ProcessingPermissions::ProcessingPermissionValue ProcessingPermissions::getPermissionValueType(
    const WideString& text) {
    if (text == ORVEL_TEXT("Accepted")) {
        return ProcessingPermissionValue::Accepted;
    }
    if (text == ORVEL_TEXT("Rejected")) {
        return ProcessingPermissionValue::Rejected;
    }
    return ProcessingPermissionValue::Unknown;
}
