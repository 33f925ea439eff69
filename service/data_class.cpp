#include "service/data_class.h"

#include "service/json.h"
#include "service/json_text.h"

namespace Orvel::Service {

std::string fieldsText(const std::vector<Field>& fields) {
    std::string text = "[";
    for (const Field& field : fields) {
        text += text.size() == 1 ? R"({"id":)" : R"(,{"id":)";
        appendJsonString(text, field.id);
        text += R"(,"name":)";
        appendJsonString(text, field.name);
        text += R"(,"nullable":)";
        appendJsonString(text, field.nullable);
        text += R"(,"type":)";
        appendJsonString(text, field.type);
        text += '}';
    }
    text += ']';
    return text;
}

std::vector<Field> readFieldsText(std::string_view text) {
    const JsonDocument document = JsonDocument::parseOwn(text);
    std::vector<Field> fields;
    document.root().forEachElement([&fields](JsonValue element) {
        const auto member = [element](std::string_view name) {
            return std::string(element.member(name).value.string().value());
        };
        fields.push_back({member("id"), member("name"), member("nullable"), member("type")});
    });
    return fields;
}

}  // namespace Orvel::Service
