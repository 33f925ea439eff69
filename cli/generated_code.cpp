#include "cli/generated_code.h"

#include <fmt/format.h>

#include <string_view>
#include <vector>

#include "cli/cpp_text.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

using Analytics::DataClass::DataClassFieldInfo;

// Every name of the library and of the standard library begins with the global namespace, so that a
// namespace of the application of the same name does not come before it.
constexpr std::string_view kLibrary = "::Orvel::Analytics::TypedEvents::";

/// A name that no two headers share as long as their classes do not.
std::string guardOf(const TypedClass& typed, const CodePlace& place) {
    std::string guard = "ORVEL_ANALYTICS_GENERATED_";
    for (const char letter : place.nameSpace + (place.nameSpace.empty() ? "" : "::")) {
        guard += letter == '_' ? "_1" : letter == ':' ? "_2" : std::string(1, letter);
    }
    return guard + typed.eventName + "_H";
}

std::string beginning(const CodePlace& place) {
    return fmt::format(
        "// Written by orvel-analytics generate from {}: change that file, not this one.\n"
        "// clang-format off\n"
        "// NOLINTBEGIN\n",
        cppLiteral(toWide(place.schemaFile)));
}

constexpr std::string_view kEnd = "// NOLINTEND\n";

std::string opened(const CodePlace& place) {
    return place.nameSpace.empty() ? "" : fmt::format("namespace {} {{\n\n", place.nameSpace);
}

std::string closed(const CodePlace& place) {
    return place.nameSpace.empty() ? "" : fmt::format("}}  // namespace {}\n\n", place.nameSpace);
}

std::string describe(const DataClassFieldInfo& field) {
    return fmt::format("The field {}, {}, of type {}.", cppLiteral(field.id),
                       cppLiteral(field.name), cppLiteral(field.type));
}

std::vector<DataClassFieldInfo> fieldsOf(const TypedClass& typed) {
    return {typed.dataClass.fields.begin(), typed.dataClass.fields.end()};
}

std::string requiredValues(const TypedClass& typed) {
    const auto fields = fieldsOf(typed);
    std::string text =
        "    /// The values that every event has, because their fields are not nullable.\n"
        "    struct Required {\n";
    for (const TypedField& field : typed.fields) {
        if (field.required) {
            text += fmt::format("        /// {}\n        {}{} {};\n", describe(fields[field.index]),
                                kLibrary, field.type, field.member);
        }
    }
    return text + fmt::format("    }};\n\n    explicit {}(const Required& required);\n\n",
                              typed.eventName);
}

std::string setters(const TypedClass& typed) {
    const auto fields = fieldsOf(typed);
    std::string text;
    for (const TypedField& field : typed.fields) {
        text += fmt::format("    /// {}\n    {}& {}(const {}{}& value);\n",
                            describe(fields[field.index]), typed.eventName, field.setter, kLibrary,
                            field.type);
    }
    return text;
}

std::string constructorOfEvent(const TypedClass& typed) {
    std::string text =
        typed.hasRequiredFields()
            ? fmt::format("{0}::{0}(const Required& required) : values_({1}) {{\n", typed.eventName,
                          typed.fields.size())
            : fmt::format("{0}::{0}() : values_({1}) {{\n", typed.eventName, typed.fields.size());
    for (const TypedField& field : typed.fields) {
        if (field.required) {
            text += fmt::format("    {}(required.{});\n", field.setter, field.member);
        }
    }
    return text + "}\n\n";
}

std::string setterBodies(const TypedClass& typed) {
    std::string text;
    for (std::size_t slot = 0; slot < typed.fields.size(); ++slot) {
        const TypedField& field = typed.fields[slot];
        text += fmt::format(
            "{0}& {0}::{1}(const {2}{3}& value) {{\n"
            "    values_.set({4}, value);\n"
            "    return *this;\n"
            "}}\n\n",
            typed.eventName, field.setter, kLibrary, field.type, slot);
    }
    return text;
}

/// A text as an expression; one may hold U+0000, where a plain literal would end.
std::string wide(WideStringView text) {
    return fmt::format("{}literal(ORVEL_TEXT({}))", kLibrary, cppLiteral(text));
}

/// A table that is made when the program is compiled.
std::string table(std::string_view type, std::string_view name,
                  const std::vector<std::string>& rows) {
    std::string text =
        fmt::format("    static constexpr ::std::array<{}, {}> {}", type, rows.size(), name);
    if (rows.empty()) {
        return text + "{};\n";
    }
    text += "{{\n";
    for (const std::string& row : rows) {
        text += "        " + row + ",\n";
    }
    return text + "    }};\n";
}

std::string textOfEvent(const TypedClass& typed) {
    const auto fields = fieldsOf(typed);
    std::vector<std::string> ids;
    for (const TypedField& field : typed.fields) {
        ids.push_back(wide(fields[field.index].id));
    }
    return fmt::format(
        "::Orvel::WideString {}::text() const {{\n{}"
        "    return values_.text(ids);\n"
        "}}\n\n",
        typed.eventName, table("::Orvel::WideStringView", "ids", ids));
}

std::string fieldsOfDataClass(const TypedClass& typed) {
    std::vector<std::string> fields;
    for (const DataClassFieldInfo& field : typed.dataClass.fields) {
        fields.push_back(fmt::format("{{{},\n         {},\n         {},\n         {}}}",
                                     wide(field.id), wide(field.name), wide(field.type),
                                     wide(field.nullable)));
    }
    return fmt::format(
        "::std::list<::Orvel::Analytics::DataClass::DataClassFieldInfo> {}::getFields() {{\n{}"
        "    return {}fieldList(fields);\n"
        "}}\n\n",
        typed.dataClassName, table(fmt::format("{}Field", kLibrary), "fields", fields), kLibrary);
}

}  // namespace

std::string generatedHeader(const TypedClass& typed, const CodePlace& place) {
    const std::string guard = guardOf(typed, place);
    const std::string name = cppLiteral(typed.dataClass.name);
    std::string text = beginning(place);
    text += fmt::format("#ifndef {0}\n#define {0}\n\n", guard);
    text += "#include <list>\n\n#include <orvel/analytics/typed_event.h>\n\n";
    text += opened(place);
    text += fmt::format(
        "/// The data class {1}, version {2}: {3}.\n"
        "class {0} final : public ::Orvel::Analytics::DataClass::BaseDataClass {{\n"
        "  public:\n"
        "    {0}();\n"
        "    void reservedOperation() override;\n"
        "    ::std::list<::Orvel::Analytics::DataClass::DataClassFieldInfo> getFields() override;\n"
        "}};\n\n",
        typed.dataClassName, cppLiteral(typed.dataClass.id), cppLiteral(typed.dataClass.version),
        name);
    text += fmt::format("/// An event of the data class {}.\nclass {} {{\n  public:\n",
                        cppLiteral(typed.dataClass.id), typed.eventName);
    text += typed.hasRequiredFields() ? requiredValues(typed)
                                      : fmt::format("    {}();\n\n", typed.eventName);
    text += setters(typed);
    text += fmt::format(
        "{}    /// The event as `CollectEvent` takes it.\n"
        "    [[nodiscard]] ::Orvel::WideString text() const;\n\n"
        "  private:\n"
        "    {}EventValues values_;\n"
        "}};\n\n",
        typed.fields.empty() ? "" : "\n", kLibrary);
    text += closed(place);
    return text + fmt::format("#endif\n{}", kEnd);
}

std::string generatedSource(const TypedClass& typed, const CodePlace& place) {
    std::string text = beginning(place);
    text += fmt::format("#include \"{}\"\n\n#include <array>\n\n", place.header);
    text += opened(place);
    text += fmt::format(
        "{0}::{0}() {{\n"
        "    name = {1};\n"
        "    id = {2};\n"
        "    version = {3};\n"
        "}}\n\n"
        "void {0}::reservedOperation() {{}}\n\n",
        typed.dataClassName, wide(typed.dataClass.name), wide(typed.dataClass.id),
        wide(typed.dataClass.version));
    text += fieldsOfDataClass(typed);
    text += constructorOfEvent(typed);
    text += setterBodies(typed);
    text += textOfEvent(typed);
    text += closed(place);
    return text + std::string(kEnd);
}

}  // namespace Orvel::Tool
