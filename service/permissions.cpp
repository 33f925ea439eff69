#include "service/permissions.h"

#include "service/error_name.h"
#include "service/json.h"
#include "service/json_object_text.h"

namespace Orvel::Service {

namespace {

std::string answerMember(JsonValue object, std::string_view name) {
    const auto answer = object.member(name).value.string();
    if (answer != "Accepted" && answer != "Rejected" && answer != "Unknown") {
        throw Refusal(ErrorNames::kMalformedJson);
    }
    return std::string(*answer);
}

}  // namespace

Permissions readPermissions(std::string_view document) {
    const JsonDocument json = JsonDocument::parseObject(document);
    return {.marketing = answerMember(json.root(), "marketing"),
            .support = answerMember(json.root(), "support"),
            .productEnhancement = answerMember(json.root(), "product_enhancement")};
}

std::string permissionsText(const Permissions& permissions) {
    return JsonObjectText()
        .text("marketing", permissions.marketing)
        .text("support", permissions.support)
        .text("product_enhancement", permissions.productEnhancement)
        .finish();
}

}  // namespace Orvel::Service
