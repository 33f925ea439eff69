#include "cli/typed_class.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <set>
#include <system_error>

#include "cli/cpp_text.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

using Analytics::DataClass::DataClassFieldInfo;

/// The values of these members the library sets itself.
bool isStamped(const DataClassFieldInfo& field) {
    return field.id == ORVEL_TEXT("DT") || field.id == ORVEL_TEXT("V");
}

/// The C++ type of a field's values; nothing when the length in its type is not within 32 bits.
std::optional<std::string> typeOf(const DataClassFieldInfo& field) {
    const std::string type = toUtf8(field.type);
    if (type == "integer") {
        return "Integer";
    }
    if (type.find("varchar") == std::string::npos) {
        return "Value";
    }
    const std::size_t first = type.find_first_of("0123456789");
    if (first == std::string::npos) {
        return "Text<>";  // The limit is that of an earlier field, if an event has one.
    }
    std::int32_t length = 0;
    const auto [end, error] =
        std::from_chars(type.data() + first, type.data() + type.size(), length);
    return error == std::errc() ? std::optional(fmt::format("Text<{}>", length)) : std::nullopt;
}

class FieldReader {
  public:
    FieldReader(const std::string& text, const std::string& path) : text_(text), path_(path) {}

    TypedField read(std::size_t index, const DataClassFieldInfo& field) {
        if (!ids_.insert(field.id).second) {
            failAtField(text_, path_, index,
                        fmt::format("the id \"{}\" stands in an earlier field already, and an "
                                    "event has one value for both",
                                    toUtf8(field.id)));
        }
        const auto type = typeOf(field);
        if (!type) {
            failAtField(text_, path_, index,
                        fmt::format("the length in the type \"{}\" is not within 32 bits",
                                    toUtf8(field.type)));
        }
        const std::string name = names_.give(camelName(field.id, "field"));
        const bool required =
            field.nullable == ORVEL_TEXT("false") || field.nullable == ORVEL_TEXT("False");
        return {index, isTaken(name) ? name + '_' : name, "set" + capitalised(name), *type,
                required};
    }

  private:
    const std::string& text_;
    const std::string& path_;
    std::set<WideString> ids_;
    DifferentNames names_;
};

}  // namespace

bool TypedClass::hasRequiredFields() const {
    return std::any_of(fields.begin(), fields.end(),
                       [](const TypedField& field) { return field.required; });
}

TypedClass typedClassOf(const std::string& text, const std::string& path) {
    TypedClass typed;
    typed.dataClass = parseDataClass(text, path);
    const std::string name = capitalised(camelName(typed.dataClass.id, "class"));
    typed.dataClassName = name + "DataClass";
    typed.eventName = name + "Event";
    FieldReader reader(text, path);
    std::size_t index = 0;
    for (const DataClassFieldInfo& field : typed.dataClass.fields) {
        TypedField read = reader.read(index++, field);
        if (!isStamped(field)) {
            typed.fields.push_back(std::move(read));
        }
    }
    return typed;
}

}  // namespace Orvel::Tool
