#ifndef ORVEL_SERVICE_CONSENT_RECORD_H
#define ORVEL_SERVICE_CONSENT_RECORD_H

#include <chrono>
#include <optional>
#include <string>

#include "service/permissions.h"
#include "service/settings.h"

namespace Orvel::Service {

/// The source of a consent that an application has set.
inline constexpr const char* kApplicationSource = "application";

/// The consent as it was last set.
struct GivenConsent {
    std::chrono::milliseconds time{0};
    std::string source;
    Permissions permissions;

    bool operator==(const GivenConsent&) const = default;
};

/// The consent record as JSON. Without a consent the time is an empty text, the source is that of
/// the settings, and the permissions are unknown.
std::string consentRecordText(const Settings& settings, const std::optional<GivenConsent>& given);

/// The addresses of the privacy documents as JSON.
std::string privacyDocumentsText(const PrivacyAddresses& addresses);

}  // namespace Orvel::Service

#endif
