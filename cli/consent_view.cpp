#include "cli/consent_view.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <string_view>

#include "cli/console.h"
#include "cli/json_words.h"
#include "cli/result_names.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

using Json = nlohmann::ordered_json;
using Value = ProcessingPermissions::ProcessingPermissionValue;

std::string_view answerName(Value value) {
    switch (value) {
        case Value::Accepted:
            return "Accepted";
        case Value::Rejected:
            return "Rejected";
        default:
            return "Unknown";
    }
}

std::string_view answerWord(Value value) {
    switch (value) {
        case Value::Accepted:
            return "accepted";
        case Value::Rejected:
            return "rejected";
        default:
            return "unknown";
    }
}

std::string line(std::string_view label, std::string_view value) {
    return fmt::format("{:<22}{}\n", label, value);
}

std::string line(std::string_view label, const WideString& value) {
    return line(label, value.empty() ? "(none)" : printable(toUtf8(value)));
}

Json toJson(const PrivacyDocuments& documents) {
    return {{"privacyurl", toUtf8(documents.privacyUrl)},
            {"warrantyurl", toUtf8(documents.warrantyUrl)},
            {"telemetryurl", toUtf8(documents.telemetryUrl)}};
}

Json toJson(const ProcessingPermissions& permissions) {
    return {{"marketing", answerName(permissions.marketing)},
            {"support", answerName(permissions.support)},
            {"product_enhancement", answerName(permissions.productEnhancement)}};
}

Json toJson(const ConsentObject& record) {
    return {{"device_serial_number", toUtf8(record.deviceSerialNumber)},
            {"timestamp", toUtf8(record.timestamp)},
            {"country_code", toUtf8(record.countryCode)},
            {"process_data", record.processData},
            {"managed", record.managed},
            {"tenant", toUtf8(record.tenant)},
            {"consent_source", toUtf8(record.consentSource)},
            {"privacy_documents", toJson(record.privacyDocuments)},
            {"processing_permissions", toJson(record.processingPermissions)}};
}

template <typename Content>
Json orNull(const std::optional<Content>& content) {
    return content ? toJson(*content) : Json();
}

/// Adds how the command ended to what it has to show.
std::string finish(Json object, const Outcome& outcome) {
    object["result"] = outcome.result ? Json(resultName(*outcome.result)) : Json();
    object["code"] = outcome.result ? Json(static_cast<std::int32_t>(*outcome.result)) : Json();
    object["exit_status"] = static_cast<int>(outcome.status);
    object["error"] = outcome.error.empty() ? Json() : Json(outcome.error);
    return jsonLine(object) + '\n';
}

}  // namespace

std::string recordText(const ConsentObject& record) {
    const ProcessingPermissions& permissions = record.processingPermissions;
    return line("marketing", answerWord(permissions.marketing)) +
           line("support", answerWord(permissions.support)) +
           line("product enhancement", answerWord(permissions.productEnhancement)) +
           line("recorded", record.timestamp) + line("source", record.consentSource) +
           line("data processing", record.processData ? "allowed" : "not allowed") +
           line("managed device", record.managed ? "yes" : "no") +
           line("device serial number", record.deviceSerialNumber) +
           line("country", record.countryCode) + line("tenant", record.tenant) +
           documentsText(record.privacyDocuments);
}

std::string changeText(bool changed, const std::optional<ConsentObject>& record) {
    return changed ? "the consent has been changed\n" + (record ? recordText(*record) : "") : "";
}

std::string documentsText(const PrivacyDocuments& documents) {
    return line("privacy statement", documents.privacyUrl) +
           line("warranty", documents.warrantyUrl) +
           line("telemetry statement", documents.telemetryUrl);
}

std::string recordJson(const std::optional<ConsentObject>& record, const Outcome& outcome) {
    return finish({{"consent", orNull(record)}}, outcome);
}

std::string changeJson(bool changed, const std::optional<ConsentObject>& record,
                       const Outcome& outcome) {
    return finish({{"changed", changed}, {"consent", orNull(record)}}, outcome);
}

std::string documentsJson(const std::optional<PrivacyDocuments>& documents,
                          const Outcome& outcome) {
    return finish({{"privacy_documents", orNull(documents)}}, outcome);
}

}  // namespace Orvel::Tool
