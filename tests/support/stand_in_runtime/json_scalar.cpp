#include <variant>

#include "support/stand_in_runtime/json_text.h"
#include "support/stand_in_runtime/json_values.h"

namespace Orvel::StandIn {
namespace {

using Content = std::variant<std::monostate, bool, double, std::wstring>;

/// Windows.Data.Json.JsonValue: what is neither an object nor an array.
class JsonScalar final : public JsonNode<> {
  public:
    explicit JsonScalar(Content content) : content_(std::move(content)) {}

    JsonValueType type() const override {
        // The alternatives stand in the order of the platform's types.
        return static_cast<JsonValueType>(content_.index());
    }

    void write(std::wstring& text) const override {
        if (const bool* const truth = asBoolean()) {
            text += *truth ? L"true" : L"false";
        } else if (const double* const number = asNumber()) {
            writeNumber(text, *number);
        } else if (const std::wstring* const string = asString()) {
            writeString(text, *string);
        } else {
            text += L"null";
        }
    }

    const std::wstring* asString() const override { return std::get_if<std::wstring>(&content_); }
    const double* asNumber() const override { return std::get_if<double>(&content_); }
    const bool* asBoolean() const override { return std::get_if<bool>(&content_); }

  protected:
    std::wstring_view runtimeClassName() const override { return L"Windows.Data.Json.JsonValue"; }

  private:
    Content content_;
};

Reference<Node> make(Content content) {
    return Reference<Node>::adopt(new JsonScalar(std::move(content)));
}

}  // namespace

Reference<Node> makeNull() { return make({}); }
Reference<Node> makeBoolean(bool value) { return make(value); }
Reference<Node> makeNumber(double value) { return make(value); }
Reference<Node> makeString(std::wstring value) { return make(std::move(value)); }

}  // namespace Orvel::StandIn
