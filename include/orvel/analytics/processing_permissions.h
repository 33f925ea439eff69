#ifndef ORVEL_ANALYTICS_PROCESSING_PERMISSIONS_H
#define ORVEL_ANALYTICS_PROCESSING_PERMISSIONS_H

#include <cstdint>

#include "orvel/analytics/export.h"
#include "orvel/analytics/text.h"

/// @file
/// What the user permits the service to process data for.

/// The user's answer for each purpose. A plain value: copied and moved member by member.
class ORVEL_ANALYTICS_EXPORT ProcessingPermissions {
  public:
    /// The answer for one purpose.
    enum class ProcessingPermissionValue : std::int32_t {
        /// The user permits it.
        Accepted = 0,
        /// The user does not permit it.
        Rejected = 1,
        /// The user was not asked, or has not answered.
        Unknown = 2,
    };

    /// Data may be processed for marketing.
    ProcessingPermissionValue marketing = ProcessingPermissionValue::Unknown;
    /// Data may be processed for support.
    ProcessingPermissionValue support = ProcessingPermissionValue::Unknown;
    /// Data may be processed to enhance the product.
    ProcessingPermissionValue productEnhancement = ProcessingPermissionValue::Unknown;

    /// The permissions document: a JSON object with the members "marketing", "support" and
    /// "product_enhancement", each "Accepted", "Rejected" or "Unknown". A value outside the
    /// enumeration is written as "Unknown".
    /// @throws Orvel::Analytics::hresult_error when the platform's JSON classes fail.
    /// @throws std::bad_alloc
    [[nodiscard]] Orvel::WideString ToJson() const;

    /// Overwrites the permissions from a permissions document; its further members are ignored. A
    /// text other than exactly "Accepted" and "Rejected" is read as `Unknown`.
    /// @return this record.
    /// @throws Orvel::Analytics::hresult_error when the text is no JSON object or lacks one of the
    ///     three strings.
    /// @throws std::bad_alloc
    ///
    /// They are read in the order marketing, product enhancement, support, and what was read before
    /// a failure stays overwritten.
    ProcessingPermissions* FromJson(Orvel::WideString json);

  private:
    static Orvel::WideString getPermissionValueStr(ProcessingPermissionValue value);
    static ProcessingPermissionValue getPermissionValueType(const Orvel::WideString& text);
};

#endif
