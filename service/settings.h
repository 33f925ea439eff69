#ifndef ORVEL_SERVICE_SETTINGS_H
#define ORVEL_SERVICE_SETTINGS_H

#include <string>

namespace Orvel::Service {

/// Where the privacy documents are; empty when there is none.
struct PrivacyAddresses {
    std::string privacy;
    std::string warranty;
    std::string telemetry;

    bool operator==(const PrivacyAddresses&) const = default;
};

/// What whoever runs the service settles. As it is made, it holds the defaults.
struct Settings {
    std::string deviceSerialNumber;
    std::string countryCode;
    std::string tenant;
    /// Where the consent comes from as long as no application has set it.
    std::string consentSource = "default";
    /// Whether somebody else than the user decides on this device's consent.
    bool managed = false;
    /// Whether events may be stored.
    bool processData = true;
    PrivacyAddresses privacyAddresses;
    /// The octal mode of the socket's file; empty for the one that follows from who runs the
    /// service and from `socketGroup`.
    std::string socketMode{};
    /// The group of the socket's file; empty for that of the process.
    std::string socketGroup{};

    bool operator==(const Settings&) const = default;
};

}  // namespace Orvel::Service

#endif
