#ifndef ORVEL_SUPPORT_CONSENT_DOCUMENTS_H
#define ORVEL_SUPPORT_CONSENT_DOCUMENTS_H

#include <nlohmann/json.hpp>

#include <string>

namespace Orvel::TestSupport {

inline nlohmann::json permissionsDocument(const std::string& marketing, const std::string& support,
                                          const std::string& productEnhancement) {
    return {{"marketing", marketing},
            {"support", support},
            {"product_enhancement", productEnhancement}};
}

inline nlohmann::json privacyDocument() {
    return {{"privacyurl", "https://example.com/privacy"},
            {"warrantyurl", "https://example.com/warranty"},
            {"telemetryurl", "https://example.com/telemetry"}};
}

/// A complete consent record.
inline nlohmann::json consentDocument() {
    return {{"device_serial_number", "SN-1"},
            {"timestamp", " 2026-01-31, in words "},
            {"country_code", "PT"},
            {"process_data", true},
            {"managed", false},
            {"tenant", "tenant \u6f22"},
            {"consent_source", "setup"},
            {"privacy_documents", privacyDocument()},
            {"processing_permissions", permissionsDocument("Accepted", "Rejected", "Unknown")}};
}

}  // namespace Orvel::TestSupport

#endif
