#include "support/event_maker.h"

#include <utility>

namespace Orvel::TestSupport {
namespace {

/// As they are written between quotation marks.
constexpr const char* kNames[] = {
    "a",   "b",       "c",  "count",  "page",
    "",    "DT",      "V",  "\u00e9", "\U0001F600",
    "a b", "\\u0061", "\\", "\"",     "long name that fills more than a single block"};

constexpr const char* kTypes[] = {
    "integer",      "integer",    "varchar(5)",    "varchar(20)",
    "varchar",      "varchar",    "varchar(0)",    "nvarchar(7)",
    "VARCHAR(1)",   "Integer",    "integer(4)",    "varchar(2147483647)",
    "varchar(007)", "1 varchar",  "text",          "",
    "varchar(3,9)", "my varchar", "\u0663varchar", "varchar(2147483648)"};

constexpr const char* kPieces[] = {"",
                                   "a",
                                   "word",
                                   "\\n",
                                   "\\u0001",
                                   "\\\"",
                                   "\\\\",
                                   "\\/",
                                   "/",
                                   "\u00e9",
                                   "\\t",
                                   "\\u00e9",
                                   "\U0001F600",
                                   "\\ud83d\\ude00",
                                   "twenty letters long "};

constexpr const char* kNumbers[] = {"0",
                                    "-0",
                                    "42",
                                    "-7",
                                    "3.9",
                                    "2147483647",
                                    "2147483648",
                                    "-2147483648",
                                    "-2147483649",
                                    "1e3",
                                    "1E-2",
                                    "-0.5e1",
                                    "1e308",
                                    "123456789012345678901234567890",
                                    "0.0e999",
                                    "5e-324",
                                    "1.7976931348623157e308"};

constexpr const char* kBadNumbers[] = {"1e999", "-1e400", "1e-400", "01", "1.", "+1", ".5"};

std::string inQuotes(const std::string& characters) { return '"' + characters + '"'; }

/// A name as it stands in a text, where two of the names above have an escape.
std::string written(const std::string& name) {
    return name == "\\" || name == "\"" ? "\\" + name : name;
}

}  // namespace

EventMaker::Fields EventMaker::fields() {
    Fields fields;
    for (std::size_t count = below(7); count > 0; --count) {
        Analytics::DataClass::DataClassFieldInfo field;
        field.id = toWide(oneOf(kNames));
        // A length beyond 32 bits ends every pass that meets it, so it must not be frequent.
        const char* const type = oneOf(kTypes);
        field.type = toWide(type == kTypes[19] && !once(3) ? "text" : type);
        field.nullable = toWide(oneOf({"true", "false", "False", "FALSE", ""}));
        field.auxValue = 0;
        fields.push_back(std::move(field));
    }
    return fields;
}

std::string EventMaker::event(const Fields& fields) {
    std::string text = blanks() + '{';
    const char* separator = "";
    // One call after the other: where a statement has several, compilers differ in their order.
    const auto add = [&](const std::string& name, const std::string& value) {
        text += separator;
        text += blanks();
        text += inQuotes(written(name));
        text += blanks();
        text += ':';
        text += value;
        text += blanks();
        separator = ",";
    };
    for (const auto& field : fields) {
        if (!once(4)) {
            const std::string value = fieldValue(toUtf8(field.type));
            add(toUtf8(field.id), value);
        }
    }
    for (std::size_t others = below(4); others > 0; --others) {
        const std::string name = oneOf(kNames);
        add(name, value(3));
    }
    text += '}' + blanks();
    return once(12) ? damaged(std::move(text)) : text;
}

std::string EventMaker::blanks() { return once(3) ? oneOf({" ", "\n", "\t\r ", "  "}) : ""; }

std::string EventMaker::string() {
    std::string characters;
    for (std::size_t pieces = below(4); pieces > 0; --pieces) {
        characters += oneOf(kPieces);
    }
    return inQuotes(characters);
}

std::string EventMaker::number() { return once(40) ? oneOf(kBadNumbers) : oneOf(kNumbers); }

std::string EventMaker::value(int depth) {
    switch (below(depth > 0 ? 8 : 5)) {
        case 0:
        case 1:
            return string();
        case 2:
            return number();
        case 3:
            return "null";
        case 4:
            return once(2) ? "true" : "false";
        case 5: {
            std::string text = "{" + inQuotes(oneOf({"x", "y", "x", "\\n"})) + ":";
            text += value(depth - 1);
            text += ",\"x\":";
            return text + value(depth - 1) + "}";
        }
        case 6: {
            std::string text = "[" + value(depth - 1);
            text += "," + blanks();
            return text + value(depth - 1) + "]";
        }
        default:
            return once(2) ? "[]" : "{}";
    }
}

std::string EventMaker::fieldValue(const std::string& type) {
    if (type == "integer" && !once(5)) {
        return number();
    }
    return once(4) ? value(3) : string();
}

/// With one byte taken away, doubled, or replaced by another one of ASCII.
std::string EventMaker::damaged(std::string text) {
    // Within a sequence of UTF-8 nothing is changed, as the text is to become UTF-16.
    std::size_t at = below(text.size());
    while (at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80) {
        ++at;
    }
    if (at == text.size()) {
        return text;
    }
    switch (below(3)) {
        case 0:
            return text.erase(at, 1);
        case 1:
            return text.insert(at, 1, text[at]);
        default:
            text[at] = static_cast<char>(below(0x80));
            return text;
    }
}

}  // namespace Orvel::TestSupport
