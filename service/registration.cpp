#include "service/registration.h"

#include "service/error_name.h"
#include "service/json.h"

namespace Orvel::Service {

namespace {

std::string textMember(JsonValue object, std::string_view name) {
    const auto text = object.member(name).value.string();
    if (!text) {
        throw Refusal(ErrorNames::kMalformedDataclass);
    }
    return std::string(*text);
}

Field readField(JsonValue field) {
    if (!field.isObject()) {
        throw Refusal(ErrorNames::kMalformedDataclass);
    }
    return {textMember(field, "id"), textMember(field, "name"), textMember(field, "nullable"),
            textMember(field, "type")};
}

}  // namespace

DataClass readRegistration(std::string_view document) {
    const JsonDocument json = JsonDocument::parseObject(document);
    const JsonValue root = json.root();
    DataClass dataClass{
        textMember(root, "name"), textMember(root, "id"), textMember(root, "version"), {}};
    const JsonValue fields = root.member("fields").value;
    if (!fields.isArray()) {
        throw Refusal(ErrorNames::kMalformedDataclass);
    }
    fields.forEachElement(
        [&dataClass](JsonValue field) { dataClass.fields.push_back(readField(field)); });
    return dataClass;
}

}  // namespace Orvel::Service
