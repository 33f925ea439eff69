#include "service/json_object_text.h"

#include "service/json_text.h"

namespace Orvel::Service {

JsonObjectText& JsonObjectText::text(std::string_view name, std::string_view value) {
    begin(name);
    appendJsonString(members_, value);
    return *this;
}

JsonObjectText& JsonObjectText::optionalText(std::string_view name,
                                             std::optional<std::string_view> value) {
    return value ? text(name, *value) : json(name, "null");
}

JsonObjectText& JsonObjectText::boolean(std::string_view name, bool value) {
    return json(name, value ? "true" : "false");
}

JsonObjectText& JsonObjectText::json(std::string_view name, std::string_view value) {
    begin(name);
    members_ += value;
    return *this;
}

std::string JsonObjectText::finish() const { return '{' + members_ + '}'; }

void JsonObjectText::begin(std::string_view name) {
    if (!members_.empty()) {
        members_ += ',';
    }
    appendJsonString(members_, name);
    members_ += ':';
}

}  // namespace Orvel::Service
