#ifndef ORVEL_STAND_IN_RUNTIME_NODE_H
#define ORVEL_STAND_IN_RUNTIME_NODE_H

#include <cstdint>
#include <string>

#include "support/stand_in_runtime/com_object.h"

namespace Orvel::StandIn {

/// A JSON value as the stand-in sees it. A value that comes back to be set or appended is taken for
/// one of these: nobody but the stand-in makes values here.
struct Node : IJsonValue {
    [[nodiscard]] virtual JsonValueType type() const = 0;
    /// Appends the value as JSON text.
    virtual void write(std::wstring& text) const = 0;

    /// The content of a value of the type, or null.
    [[nodiscard]] virtual const std::wstring* asString() const { return nullptr; }
    [[nodiscard]] virtual const double* asNumber() const { return nullptr; }
    [[nodiscard]] virtual const bool* asBoolean() const { return nullptr; }
    [[nodiscard]] virtual IJsonObject* asObject() { return nullptr; }
    [[nodiscard]] virtual IJsonArray* asArray() { return nullptr; }
};

template <>
struct Traits<Node> : Traits<IJsonValue> {};

inline Node& nodeOf(IJsonValue* value) { return *static_cast<Node*>(value); }

/// Gives `value` to the caller, who holds a reference of its own from then on.
template <typename Interface>
HRESULT share(Interface* value, Interface** out) {
    if (value == nullptr) {
        return kIllegalMethodCall;
    }
    value->AddRef();
    *out = value;
    return S_OK;
}

/// Give the content of a value, which fails for a value of another type.
inline HRESULT readString(const Node& node, HSTRING* value) {
    return node.asString() == nullptr ? kIllegalMethodCall : handOut(*node.asString(), value);
}

template <typename Content, typename Out>
HRESULT readPlain(const Content* content, Out* value) {
    if (content == nullptr) {
        return kIllegalMethodCall;
    }
    if (value == nullptr) {
        return E_POINTER;
    }
    *value = *content;
    return S_OK;
}

/// What all values have in common.
template <typename... Interfaces>
class JsonNode : public ComObject<Node, IAgileObject, Interfaces...> {
  public:
    HRESULT STDMETHODCALLTYPE get_ValueType(JsonValueType* value) override {
        return perform("IJsonValue.get_ValueType", [&]() -> HRESULT {
            *value = this->type();
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE Stringify(HSTRING* value) override {
        return perform("IJsonValue.Stringify", [&] {
            std::wstring text;
            this->write(text);
            return handOut(text, value);
        });
    }
    HRESULT STDMETHODCALLTYPE GetString(HSTRING* value) override {
        return perform("IJsonValue.GetString", [&] { return readString(*this, value); });
    }
    HRESULT STDMETHODCALLTYPE GetNumber(double* value) override {
        return perform("IJsonValue.GetNumber", [&] { return readPlain(this->asNumber(), value); });
    }
    HRESULT STDMETHODCALLTYPE GetBoolean(boolean* value) override {
        return perform("IJsonValue.GetBoolean",
                       [&] { return readPlain(this->asBoolean(), value); });
    }
    HRESULT STDMETHODCALLTYPE GetArray(IJsonArray** value) override {
        return perform("IJsonValue.GetArray", [&] {
            return value == nullptr ? E_POINTER : share(this->asArray(), value);
        });
    }
    HRESULT STDMETHODCALLTYPE GetObject(IJsonObject** value) override {
        return perform("IJsonValue.GetObject", [&] {
            return value == nullptr ? E_POINTER : share(this->asObject(), value);
        });
    }
};

}  // namespace Orvel::StandIn

#endif
