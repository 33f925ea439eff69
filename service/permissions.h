#ifndef ORVEL_SERVICE_PERMISSIONS_H
#define ORVEL_SERVICE_PERMISSIONS_H

#include <string>
#include <string_view>

namespace Orvel::Service {

/// What the user has answered for each purpose of processing: "Accepted", "Rejected" or "Unknown".
struct Permissions {
    std::string marketing = "Unknown";
    std::string support = "Unknown";
    std::string productEnhancement = "Unknown";

    bool operator==(const Permissions&) const = default;
};

/// Reads a permissions document: the texts "marketing", "support" and "product_enhancement", each
/// one of the three answers. Other members are allowed.
/// @throws Refusal MalformedJson for any other text.
Permissions readPermissions(std::string_view document);

/// The permissions document.
std::string permissionsText(const Permissions& permissions);

}  // namespace Orvel::Service

#endif
