#include "fuzz/support/consent_model.h"

#include <optional>
#include <string>
#include <tuple>

#include "support/event_model.h"
#include "support/plain_json.h"

namespace Orvel::Fuzz {
namespace {

using TestSupport::PlainJson;
using Kind = PlainJson::Kind;
using Permission = ProcessingPermissions::ProcessingPermissionValue;

std::optional<PlainJson> readObject(WideStringView json) {
    const auto text = TestSupport::wellFormed(json);
    auto value =
        text ? TestSupport::readPlainJson(*text, TestSupport::kDeepestEvent) : std::nullopt;
    return value && value->kind == Kind::kObject ? value : std::nullopt;
}

const PlainJson* memberOf(const PlainJson& object, const char* name, Kind kind) {
    const PlainJson* const value = object.member(name);
    return value != nullptr && value->kind == kind ? value : nullptr;
}

bool readText(const PlainJson& object, const char* name, WideString& text) {
    const PlainJson* const value = memberOf(object, name, Kind::kString);
    if (value != nullptr) {
        text = toWide(value->text);
    }
    return value != nullptr;
}

bool readBoolean(const PlainJson& object, const char* name, bool& boolean) {
    const PlainJson* const value = memberOf(object, name, Kind::kBoolean);
    if (value != nullptr) {
        boolean = value->text == "true";
    }
    return value != nullptr;
}

bool readPermission(const PlainJson& object, const char* name, Permission& permission) {
    const PlainJson* const value = memberOf(object, name, Kind::kString);
    if (value != nullptr) {
        permission = value->text == "Accepted"   ? Permission::Accepted
                     : value->text == "Rejected" ? Permission::Rejected
                                                 : Permission::Unknown;
    }
    return value != nullptr;
}

bool readDocuments(const PlainJson& object, PrivacyDocuments& documents) {
    return readText(object, "privacyurl", documents.privacyUrl) &&
           readText(object, "warrantyurl", documents.warrantyUrl) &&
           readText(object, "telemetryurl", documents.telemetryUrl);
}

bool readPermissions(const PlainJson& object, ProcessingPermissions& permissions) {
    return readPermission(object, "marketing", permissions.marketing) &&
           readPermission(object, "product_enhancement", permissions.productEnhancement) &&
           readPermission(object, "support", permissions.support);
}

}  // namespace

bool readDocumentsByModel(WideStringView json, PrivacyDocuments& documents) {
    const auto object = readObject(json);
    return object && readDocuments(*object, documents);
}

bool readPermissionsByModel(WideStringView json, ProcessingPermissions& permissions) {
    const auto object = readObject(json);
    return object && readPermissions(*object, permissions);
}

bool readConsentByModel(WideStringView json, ConsentObject& consent) {
    const auto object = readObject(json);
    if (!object) {
        return false;
    }
    const PlainJson* const documents = memberOf(*object, "privacy_documents", Kind::kObject);
    const PlainJson* const permissions = memberOf(*object, "processing_permissions", Kind::kObject);
    return readText(*object, "device_serial_number", consent.deviceSerialNumber) &&
           readText(*object, "timestamp", consent.timestamp) &&
           readText(*object, "country_code", consent.countryCode) &&
           readBoolean(*object, "process_data", consent.processData) &&
           readBoolean(*object, "managed", consent.managed) &&
           readText(*object, "tenant", consent.tenant) &&
           readText(*object, "consent_source", consent.consentSource) && documents != nullptr &&
           permissions != nullptr && readPermissions(*permissions, consent.processingPermissions) &&
           readDocuments(*documents, consent.privacyDocuments);
}

bool areSame(const PrivacyDocuments& one, const PrivacyDocuments& other) {
    return std::tie(one.privacyUrl, one.warrantyUrl, one.telemetryUrl) ==
           std::tie(other.privacyUrl, other.warrantyUrl, other.telemetryUrl);
}

bool areSame(const ProcessingPermissions& one, const ProcessingPermissions& other) {
    return std::tie(one.marketing, one.support, one.productEnhancement) ==
           std::tie(other.marketing, other.support, other.productEnhancement);
}

bool areSame(const ConsentObject& one, const ConsentObject& other) {
    const auto own = [](const ConsentObject& consent) {
        return std::tie(consent.deviceSerialNumber, consent.timestamp, consent.countryCode,
                        consent.processData, consent.managed, consent.tenant,
                        consent.consentSource);
    };
    return own(one) == own(other) && areSame(one.privacyDocuments, other.privacyDocuments) &&
           areSame(one.processingPermissions, other.processingPermissions);
}

}  // namespace Orvel::Fuzz
