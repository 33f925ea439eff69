#include "service/consent_record.h"

#include "service/calendar.h"
#include "service/json_object_text.h"

namespace Orvel::Service {

std::string consentRecordText(const Settings& settings, const std::optional<GivenConsent>& given) {
    return JsonObjectText()
        .text("device_serial_number", settings.deviceSerialNumber)
        .text("timestamp", given ? utcText(given->time) : std::string())
        .text("country_code", settings.countryCode)
        .boolean("process_data", settings.processData)
        .boolean("managed", settings.managed)
        .text("tenant", settings.tenant)
        .text("consent_source", given ? given->source : settings.consentSource)
        .json("privacy_documents", privacyDocumentsText(settings.privacyAddresses))
        .json("processing_permissions", permissionsText(given ? given->permissions : Permissions{}))
        .finish();
}

std::string privacyDocumentsText(const PrivacyAddresses& addresses) {
    return JsonObjectText()
        .text("privacyurl", addresses.privacy)
        .text("warrantyurl", addresses.warranty)
        .text("telemetryurl", addresses.telemetry)
        .finish();
}

}  // namespace Orvel::Service
