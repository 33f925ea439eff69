#include "orvel/analytics/privacy_documents.h"

#include "json/json.h"

// Taken by value, as every reader of the library takes its text.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
PrivacyDocuments* PrivacyDocuments::FromJson(Orvel::WideString json) {
    Orvel::Analytics::Json::Document document;
    const Orvel::Analytics::Json::Object addresses = document.parseObject(json);
    privacyUrl = addresses.getNamedString(ORVEL_TEXT("privacyurl"));
    warrantyUrl = addresses.getNamedString(ORVEL_TEXT("warrantyurl"));
    telemetryUrl = addresses.getNamedString(ORVEL_TEXT("telemetryurl"));
    return this;
}
