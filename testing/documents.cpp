#include "testing/documents.h"

#include <utility>

#include "testing/json_string.h"
#include "testing/text.h"

namespace Orvel::Analytics::Testing {
namespace {

using Permission = ProcessingPermissions::ProcessingPermissionValue;

Event readEvent(const Value& record) {
    Event event;
    event.dataClass = record.names().at(0);
    event.values = record.elements().at(0);
    event.time = event.values.take("DT").string();
    event.version = event.values.take("V").string();
    return event;
}

Permission permissionOf(const Value& document, std::string_view purpose) {
    const std::string& word = document.at(purpose).string();
    return word == "Accepted"   ? Permission::Accepted
           : word == "Rejected" ? Permission::Rejected
                                : Permission::Unknown;
}

WideStringView wordOf(Permission permission) {
    switch (permission) {
        case Permission::Accepted:
            return ORVEL_TEXT("Accepted");
        case Permission::Rejected:
            return ORVEL_TEXT("Rejected");
        default:
            return ORVEL_TEXT("Unknown");
    }
}

/// Writes an object, member by member.
class ObjectText {
  public:
    ObjectText& text(WideStringView name, WideStringView value) {
        addName(name);
        appendJsonString<WideChar>(json_, value);
        return *this;
    }

    ObjectText& json(WideStringView name, WideStringView value) {
        addName(name);
        json_ += value;
        return *this;
    }

    ObjectText& boolean(WideStringView name, bool value) {
        return json(name, value ? ORVEL_TEXT("true") : ORVEL_TEXT("false"));
    }

    WideString finish() { return std::move(json_) + ORVEL_TEXT("}"); }

  private:
    void addName(WideStringView name) {
        json_ += json_.empty() ? ORVEL_TEXT("{") : ORVEL_TEXT(",");
        appendJsonString<WideChar>(json_, name);
        json_ += ORVEL_TEXT(":");
    }

    WideString json_;
};

WideString permissionsDocument(const ProcessingPermissions& permissions) {
    return ObjectText()
        .text(ORVEL_TEXT("marketing"), wordOf(permissions.marketing))
        .text(ORVEL_TEXT("support"), wordOf(permissions.support))
        .text(ORVEL_TEXT("product_enhancement"), wordOf(permissions.productEnhancement))
        .finish();
}

}  // namespace

Registration readRegistration(WideStringView document) {
    const Value value = Value::parse(utf8Of(document));
    Registration registration;
    registration.name = value.at("name").string();
    registration.id = value.at("id").string();
    registration.version = value.at("version").string();
    for (const Value& field : value.at("fields").elements()) {
        registration.fields.push_back({field.at("id").string(), field.at("name").string(),
                                       field.at("nullable").string(), field.at("type").string()});
    }
    return registration;
}

Batch readBatch(WideStringView document) {
    const Value value = Value::parse(utf8Of(document));
    const Value& session = value.at("events").at(0);
    const Value& identity = session.at("appsession");
    Batch batch;
    batch.application = identity.at("1").string();
    batch.applicationVersion = identity.at("2").string();
    batch.sessionId = identity.at("3").string();
    batch.sessionCounter = identity.at("4").integer().value();
    batch.userId = identity.at("5").string();
    batch.deviceId = identity.at("6").string();
    batch.environment = identity.at("7").string();
    batch.started = identity.at("DT").string();
    batch.version = identity.at("V").string();
    for (const Value& record : session.at("data").elements()) {
        batch.events.push_back(readEvent(record));
    }
    return batch;
}

ProcessingPermissions readPermissions(WideStringView document) {
    const Value value = Value::parse(utf8Of(document));
    ProcessingPermissions permissions;
    permissions.marketing = permissionOf(value, "marketing");
    permissions.support = permissionOf(value, "support");
    permissions.productEnhancement = permissionOf(value, "product_enhancement");
    return permissions;
}

WideString consentDocument(const ConsentObject& consent) {
    return ObjectText()
        .text(ORVEL_TEXT("device_serial_number"), consent.deviceSerialNumber)
        .text(ORVEL_TEXT("timestamp"), consent.timestamp)
        .text(ORVEL_TEXT("country_code"), consent.countryCode)
        .boolean(ORVEL_TEXT("process_data"), consent.processData)
        .boolean(ORVEL_TEXT("managed"), consent.managed)
        .text(ORVEL_TEXT("tenant"), consent.tenant)
        .text(ORVEL_TEXT("consent_source"), consent.consentSource)
        .json(ORVEL_TEXT("privacy_documents"), addressesDocument(consent.privacyDocuments))
        .json(ORVEL_TEXT("processing_permissions"),
              permissionsDocument(consent.processingPermissions))
        .finish();
}

WideString addressesDocument(const PrivacyDocuments& documents) {
    return ObjectText()
        .text(ORVEL_TEXT("privacyurl"), documents.privacyUrl)
        .text(ORVEL_TEXT("warrantyurl"), documents.warrantyUrl)
        .text(ORVEL_TEXT("telemetryurl"), documents.telemetryUrl)
        .finish();
}

}  // namespace Orvel::Analytics::Testing
