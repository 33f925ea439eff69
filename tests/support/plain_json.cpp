#include "support/plain_json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Orvel::TestSupport {
namespace {

using Kind = PlainJson::Kind;
using Json = nlohmann::json;

constexpr char kStringMark = '$';
constexpr char kNumberMark = '#';

/// Whether the text is a number of JSON, of any size.
bool isNumber(std::string_view text) {
    const auto take = [&text](std::string_view anyOf) {
        const bool isOne = !text.empty() && anyOf.find(text.front()) != std::string_view::npos;
        text.remove_prefix(isOne ? 1 : 0);
        return isOne;
    };
    const auto takeDigits = [&text] {
        const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
        text.remove_prefix(digits);
        return digits > 0;
    };
    take("-");
    if (!take("0") && !takeDigits()) {
        return false;
    }
    if (take(".") && !takeDigits()) {
        return false;
    }
    if (take("eE")) {
        take("+-");
        return takeDigits() && text.empty();
    }
    return text.empty();
}

std::size_t endOfString(std::string_view json, std::size_t at) {
    for (++at; at < json.size() && json[at] != '"'; ++at) {
        if (json[at] == '\\') {
            ++at;
        }
    }
    return std::min(at + 1, json.size());
}

/// The text with something else for each of its strings, quotes included, and numbers.
template <typename OfString, typename OfNumber>
std::string rewritten(std::string_view json, OfString ofString, OfNumber ofNumber) {
    constexpr std::string_view kOfNumbers = "+-.0123456789eE";
    std::string out;
    for (std::size_t at = 0; at < json.size();) {
        std::size_t end = at + 1;
        if (json[at] == '"') {
            end = endOfString(json, at);
            out += ofString(json.substr(at, end - at));
        } else if (json[at] == '-' || (json[at] >= '0' && json[at] <= '9')) {
            end = std::min(json.find_first_not_of(kOfNumbers, at), json.size());
            out += ofNumber(json.substr(at, end - at));
        } else {
            out += json[at];
        }
        at = end;
    }
    return out;
}

/// The JSON library gives numbers as what they mean, but how they were written counts: so each
/// number of a text becomes a string, and a mark tells them from the strings that were there.
std::string marked(std::string_view json) {
    return rewritten(
        json,
        [](std::string_view text) {
            return std::string{'"', kStringMark}.append(text.substr(1));
        },
        [](std::string_view number) {
            return std::string{'"', kNumberMark}.append(number).append("\"");
        });
}

bool isJson(std::string_view text, Numbers numbers) {
    if (numbers == Numbers::kOfDouble) {
        return Json::accept(text);
    }
    return Json::accept(rewritten(
        text, [](std::string_view string) { return string; },
        [](std::string_view number) { return isNumber(number) ? "0" : number; }));
}

bool isTooSmall(const std::string& number) {
    const std::string digits = number.substr(0, number.find_first_of("eE"));
    return std::strtod(number.c_str(), nullptr) == 0 &&
           digits.find_first_of("123456789") != std::string::npos;
}

class Builder final : public nlohmann::json_sax<Json> {
  public:
    Builder(std::size_t deepest, Numbers numbers) : deepest_(deepest), numbers_(numbers) {}

    PlainJson take() { return std::move(root_); }

    bool null() override { return add({Kind::kNull, {}, {}, {}}); }
    bool boolean(bool value) override {
        return add({Kind::kBoolean, value ? "true" : "false", {}, {}});
    }
    bool string(std::string& value) override {
        const bool ofNumber = value.front() == kNumberMark;
        std::string text = value.substr(1);
        if (ofNumber && numbers_ == Numbers::kOfDouble && isTooSmall(text)) {
            return false;
        }
        return add({ofNumber ? Kind::kNumber : Kind::kString, std::move(text), {}, {}});
    }
    bool key(std::string& name) override {
        open_.back().name = name.substr(1);
        return true;
    }
    bool start_object(std::size_t) override { return open(Kind::kObject); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Kind::kArray); }
    bool end_array() override { return close(); }

    // What a text without numbers never gives.
    bool number_integer(std::int64_t) override { return false; }
    bool number_unsigned(std::uint64_t) override { return false; }
    bool number_float(double, const std::string&) override { return false; }
    bool binary(Json::binary_t&) override { return false; }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

  private:
    struct Open {
        PlainJson value;
        std::string name;
    };

    bool open(Kind kind) {
        open_.push_back({{kind, {}, {}, {}}, {}});
        return open_.size() <= deepest_;
    }

    bool close() {
        PlainJson value = std::move(open_.back().value);
        open_.pop_back();
        return add(std::move(value));
    }

    bool add(PlainJson value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (open_.back().value.kind == Kind::kObject) {
            open_.back().value.set(open_.back().name, std::move(value));
        } else {
            open_.back().value.values.push_back(std::move(value));
        }
        return true;
    }

    std::size_t deepest_;
    Numbers numbers_;
    PlainJson root_;
    std::vector<Open> open_;
};

void appendString(std::string& out, const std::string& characters) {
    constexpr std::string_view kEscaped = "\"\\\b\f\n\r\t";
    constexpr std::string_view kEscapes = "\"\\bfnrt";
    out += '"';
    for (const char character : characters) {
        const std::size_t escape = kEscaped.find(character);
        if (escape != std::string_view::npos) {
            out += '\\';
            out += kEscapes[escape];
        } else if (static_cast<unsigned char>(character) < 0x20) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04X", static_cast<unsigned>(character));
            out += code.data();
        } else {
            out += character;
        }
    }
    out += '"';
}

void appendText(std::string& out, const PlainJson& value) {
    switch (value.kind) {
        case Kind::kNull:
            out += "null";
            return;
        case Kind::kBoolean:
        case Kind::kNumber:
            out += value.text;
            return;
        case Kind::kString:
            appendString(out, value.text);
            return;
        default:
            break;
    }
    const bool isObject = value.kind == Kind::kObject;
    out += isObject ? '{' : '[';
    for (std::size_t index = 0; index < value.values.size(); ++index) {
        out += index == 0 ? "" : ",";
        if (isObject) {
            appendString(out, value.names[index]);
            out += ':';
        }
        appendText(out, value.values[index]);
    }
    out += isObject ? '}' : ']';
}

}  // namespace

const PlainJson* PlainJson::member(std::string_view name) const {
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? nullptr
                                : &values[static_cast<std::size_t>(found - names.begin())];
}

void PlainJson::set(std::string name, PlainJson value) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found != names.end()) {
        values[static_cast<std::size_t>(found - names.begin())] = std::move(value);
        return;
    }
    names.push_back(std::move(name));
    values.push_back(std::move(value));
}

PlainJson plainString(std::string text) { return {Kind::kString, std::move(text), {}, {}}; }

PlainJson plainObject(std::string name, PlainJson value) {
    PlainJson object{Kind::kObject, {}, {}, {}};
    object.set(std::move(name), std::move(value));
    return object;
}

std::optional<PlainJson> readPlainJson(std::string_view text, std::size_t deepest,
                                       Numbers numbers) {
    // The JSON library skips a byte order mark, and takes a null character for the text's end.
    if (text.starts_with("\xEF\xBB\xBF") || text.find('\0') != std::string_view::npos ||
        !isJson(text, numbers)) {
        return std::nullopt;
    }
    Builder builder(deepest, numbers);
    if (!Json::sax_parse(marked(text), &builder)) {
        return std::nullopt;
    }
    return builder.take();
}

std::string plainText(const PlainJson& value) {
    std::string text;
    appendText(text, value);
    return text;
}

std::size_t plainLength(const PlainJson& value) {
    std::size_t units = 0;
    for (const char character : plainText(value)) {
        const auto byte = static_cast<unsigned char>(character);
        // A character counts with its first byte.
        units += byte >= 0xF0 ? 2 : byte >= 0x80 && byte < 0xC0 ? 0 : 1;
    }
    return units;
}

}  // namespace Orvel::TestSupport
