#include "orvel/analytics/consent_object.h"

#include "json/json.h"

namespace Json = Orvel::Analytics::Json;

// Taken by value, as every reader of the library takes its text.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
ConsentObject ConsentObject::FromJson(Orvel::WideString json) {
    ConsentObject consent;
    Json::Document document;
    // The order of reading decides which of several faults is the one reported.
    const Json::Object record = document.parseObject(json);
    consent.deviceSerialNumber = record.getNamedString(ORVEL_TEXT("device_serial_number"));
    consent.timestamp = record.getNamedString(ORVEL_TEXT("timestamp"));
    consent.countryCode = record.getNamedString(ORVEL_TEXT("country_code"));
    consent.processData = record.getNamedBoolean(ORVEL_TEXT("process_data"));
    consent.managed = record.getNamedBoolean(ORVEL_TEXT("managed"));
    consent.tenant = record.getNamedString(ORVEL_TEXT("tenant"));
    consent.consentSource = record.getNamedString(ORVEL_TEXT("consent_source"));
    const Json::Object documents = record.getNamedObject(ORVEL_TEXT("privacy_documents"));
    const Json::Object permissions = record.getNamedObject(ORVEL_TEXT("processing_permissions"));
    consent.processingPermissions.FromJson(permissions.stringify());
    // Read once more on purpose: a platform that fails between the two readings is noticed here.
    static_cast<void>(record.getNamedObject(ORVEL_TEXT("privacy_documents")));
    consent.privacyDocuments.FromJson(documents.stringify());
    return consent;
}
