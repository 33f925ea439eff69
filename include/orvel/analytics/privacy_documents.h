#ifndef ORVEL_ANALYTICS_PRIVACY_DOCUMENTS_H
#define ORVEL_ANALYTICS_PRIVACY_DOCUMENTS_H

#include "orvel/analytics/export.h"
#include "orvel/analytics/text.h"

/// @file
/// Where the user finds the documents about privacy.

/// The addresses of the privacy documents, exactly as the service names them: the library neither
/// checks nor opens them. A plain value that owns its texts. A copy assignment that runs out of
/// memory (`std::bad_alloc`) leaves each text as it was or as it was to be.
class ORVEL_ANALYTICS_EXPORT PrivacyDocuments {
  public:
    /// The address of the privacy statement.
    Orvel::WideString privacyUrl;
    /// The address of the warranty document.
    Orvel::WideString warrantyUrl;
    /// The address of the telemetry statement.
    Orvel::WideString telemetryUrl;

    /// Overwrites the addresses from a JSON object with the strings "privacyurl", "warrantyurl" and
    /// "telemetryurl"; its further members are ignored.
    /// @return this record.
    /// @throws Orvel::Analytics::hresult_error when the text is no JSON object or lacks one of the
    ///     three.
    /// @throws std::bad_alloc
    ///
    /// What was read before a failure stays overwritten.
    PrivacyDocuments* FromJson(Orvel::WideString json);
};

#endif
