#ifndef ORVEL_ANALYTICS_CONSENT_OBJECT_H
#define ORVEL_ANALYTICS_CONSENT_OBJECT_H

#include "orvel/analytics/export.h"
#include "orvel/analytics/privacy_documents.h"
#include "orvel/analytics/processing_permissions.h"
#include "orvel/analytics/text.h"

/// @file
/// The record of the user's consent.

/// The consent that the service keeps for this device. A plain value that owns its texts, which are
/// exactly as the service sent them. A copy assignment that runs out of memory (`std::bad_alloc`)
/// leaves each text as it was or as it was to be.
class ORVEL_ANALYTICS_EXPORT ConsentObject {
  public:
    /// The device's serial number, as the service reports it.
    Orvel::WideString deviceSerialNumber;
    /// When the consent was recorded, in the service's words.
    Orvel::WideString timestamp;
    /// The country's code.
    Orvel::WideString countryCode;
    /// Whether the service may process the device's data.
    bool processData = false;
    /// Whether the device is managed: consent cannot be changed there.
    bool managed = false;
    /// The tenant.
    Orvel::WideString tenant;
    /// Where the consent came from, as the service names it.
    Orvel::WideString consentSource;
    /// The addresses of the privacy documents.
    PrivacyDocuments privacyDocuments;
    /// What the user permits.
    ProcessingPermissions processingPermissions;

    /// Reads a consent record document, a JSON object; its further members are ignored.
    /// @throws Orvel::Analytics::hresult_error when the text is no JSON object or one of the nine
    ///     members is missing or of another type.
    /// @throws std::bad_alloc
    [[nodiscard]] static ConsentObject FromJson(Orvel::WideString json);
};

#endif
