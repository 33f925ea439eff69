#ifndef ORVEL_FUZZ_CONSENT_MODEL_H
#define ORVEL_FUZZ_CONSENT_MODEL_H

#include "orvel/analytics.h"

/// The three readers of consent documents once more, on another JSON library. Each fills what it
/// reads before the first fault, and returns whether there was none.
namespace Orvel::Fuzz {

bool readDocumentsByModel(WideStringView json, PrivacyDocuments& documents);
bool readPermissionsByModel(WideStringView json, ProcessingPermissions& permissions);
bool readConsentByModel(WideStringView json, ConsentObject& consent);

bool areSame(const PrivacyDocuments& one, const PrivacyDocuments& other);
bool areSame(const ProcessingPermissions& one, const ProcessingPermissions& other);
bool areSame(const ConsentObject& one, const ConsentObject& other);

}  // namespace Orvel::Fuzz

#endif
