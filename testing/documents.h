#ifndef ORVEL_TESTING_DOCUMENTS_H
#define ORVEL_TESTING_DOCUMENTS_H

#include "orvel/analytics/consent_object.h"
#include "orvel/analytics/privacy_documents.h"
#include "orvel/analytics/processing_permissions.h"
#include "orvel/analytics/testing/records.h"
#include "orvel/analytics/text.h"

/// The documents of JSON that stand in commands and replies. What is read raises
/// `std::invalid_argument` when it is no JSON, and `std::logic_error` or `std::out_of_range` when
/// it is another document.
namespace Orvel::Analytics::Testing {

[[nodiscard]] Registration readRegistration(WideStringView document);
[[nodiscard]] Batch readBatch(WideStringView document);
[[nodiscard]] ProcessingPermissions readPermissions(WideStringView document);

[[nodiscard]] WideString consentDocument(const ConsentObject& consent);
[[nodiscard]] WideString addressesDocument(const PrivacyDocuments& documents);

}  // namespace Orvel::Analytics::Testing

#endif
