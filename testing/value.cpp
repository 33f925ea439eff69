#include "orvel/analytics/testing/value.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "testing/json_string.h"

namespace Orvel::Analytics::Testing {
namespace {

using Kind = Value::Kind;

void expect(Kind expected, Kind actual, const char* name) {
    if (actual != expected) {
        throw std::logic_error(std::string("the value is no ") + name);
    }
}

void append(std::string& json, const Value& value) {
    switch (value.kind()) {
        case Kind::Null:
            json += "null";
            return;
        case Kind::Boolean:
            json += value.boolean() ? "true" : "false";
            return;
        case Kind::Number:
            json += value.written();
            return;
        case Kind::String:
            appendJsonString<char>(json, value.string());
            return;
        default:
            break;
    }
    const bool isObject = value.kind() == Kind::Object;
    json += isObject ? '{' : '[';
    for (std::size_t index = 0; index < value.size(); ++index) {
        json += index == 0 ? "" : ",";
        if (isObject) {
            appendJsonString<char>(json, value.names()[index]);
            json += ':';
        }
        append(json, value.elements()[index]);
    }
    json += isObject ? '}' : ']';
}

}  // namespace

Value::Value() noexcept : kind_(Kind::Null) {}
Value::Value(std::nullptr_t) noexcept : Value() {}
Value::Value(const char* text) : Value(Kind::String, text) {}
Value::Value(std::string text) : Value(Kind::String, std::move(text)) {}
Value::Value(std::string_view text) : Value(Kind::String, std::string(text)) {}
Value::Value(Kind kind, std::string text) : kind_(kind), text_(std::move(text)) {}
Value::Value(const Value& other) = default;
Value::Value(Value&& other) noexcept = default;
Value& Value::operator=(const Value& other) = default;
Value& Value::operator=(Value&& other) noexcept = default;
Value::~Value() = default;

Value Value::number(std::string_view written) {
    Value value = parse(written);
    if (value.kind_ != Kind::Number) {
        throw std::invalid_argument("no number of JSON: " + std::string(written));
    }
    return value;
}

bool Value::boolean() const {
    expect(Kind::Boolean, kind_, "boolean");
    return text_ == "true";
}

const std::string& Value::string() const {
    expect(Kind::String, kind_, "string");
    return text_;
}

const std::string& Value::written() const {
    expect(Kind::Number, kind_, "number");
    return text_;
}

std::optional<std::int64_t> Value::integer() const noexcept {
    std::int64_t number = 0;
    const char* const end = text_.data() + text_.size();
    const auto [stopped, error] = std::from_chars(text_.data(), end, number);
    const bool isWhole = kind_ == Kind::Number && error == std::errc() && stopped == end;
    return isWhole ? std::optional(number) : std::nullopt;
}

const Value* Value::find(std::string_view name) const noexcept {
    const auto found = std::find(names_.begin(), names_.end(), name);
    return found == names_.end() ? nullptr
                                 : &elements_[static_cast<std::size_t>(found - names_.begin())];
}

const Value& Value::at(std::string_view name) const {
    const Value* const found = find(name);
    if (found == nullptr) {
        throw std::out_of_range("there is no member \"" + std::string(name) + '"');
    }
    return *found;
}

const Value& Value::at(std::size_t index) const {
    if (kind_ != Kind::Array || index >= elements_.size()) {
        throw std::out_of_range("there is no element " + std::to_string(index));
    }
    return elements_[index];
}

Value Value::take(std::string_view name) {
    const auto found = std::find(names_.begin(), names_.end(), name);
    if (found == names_.end()) {
        return {};
    }
    const auto element = elements_.begin() + (found - names_.begin());
    Value taken = std::move(*element);
    elements_.erase(element);
    names_.erase(found);
    return taken;
}

std::string Value::json() const {
    std::string json;
    append(json, *this);
    return json;
}

bool Value::operator==(const Value& other) const noexcept {
    if (kind_ != other.kind_ || text_ != other.text_ || size() != other.size()) {
        return false;
    }
    if (kind_ != Kind::Object) {
        return elements_ == other.elements_;
    }
    return std::all_of(names_.begin(), names_.end(), [&](const std::string& name) {
        const Value* const value = other.find(name);
        return value != nullptr && *find(name) == *value;
    });
}

}  // namespace Orvel::Analytics::Testing
