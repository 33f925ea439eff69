#include <utility>
#include <vector>

#include "json/checks.h"
#include "json/json.h"
#include "json/windows/abi.h"
#include "json/windows/factory.h"
#include "json/windows/runtime.h"

/// The backend on the platform's own JSON classes.
namespace Orvel::Analytics::Json {
namespace {

constinit RuntimeClass objectClass{L"Windows.Data.Json.JsonObject"};
constinit RuntimeClass arrayClass{L"Windows.Data.Json.JsonArray"};
constinit RuntimeClass valueClass{L"Windows.Data.Json.JsonValue"};

/// Every handle's node is the interface that all values have.
Abi::JsonValue* valueOf(void* node) { return static_cast<Abi::JsonValue*>(node); }

template <typename Interface>
ComPointer<Interface> viewed(void* node) {
    return query<Interface>(valueOf(node));
}

/// A view's node is the platform's view.
Abi::JsonMapView* viewOf(void* node) { return static_cast<Abi::JsonMapView*>(node); }

ComPointer<Abi::JsonValue> parse(WideStringView text) {
    const StringReference json(text);
    ComPointer<Abi::JsonObject> object;
    check(objectClass.statics<Abi::JsonObjectStatics>()->Parse(json.get(), object.receive()),
          "JsonObject.Parse");
    return query<Abi::JsonValue>(object.get());
}

}  // namespace

struct Document::Impl {
    /// The references that the handles of the document stand for.
    std::vector<ComPointer<::IUnknown>> owned;

    template <typename Interface>
    Interface* own(ComPointer<Interface> object) {
        owned.emplace_back();
        Interface* const node = object.detach();
        owned.back() = ComPointer<::IUnknown>(node);
        return node;
    }
};

WideString Value::stringify() const {
    ReceivedString text;
    check(valueOf(node_)->Stringify(text.receive()), "JsonValue.Stringify");
    return text.copy();
}

std::size_t Value::serialisedLength() const { return stringify().size(); }

bool ObjectView::hasKey(WideStringView name) const {
    const StringReference key(name);
    Abi::Boolean found = 0;
    check(viewOf(object_.node_)->HasKey(key.get(), &found), "JsonObject.HasKey");
    return found != 0;
}

std::optional<Value> ObjectView::lookup(WideStringView name) const {
    const StringReference key(name);
    ComPointer<Abi::JsonValue> value;
    check(viewOf(object_.node_)->Lookup(key.get(), value.receive()), "JsonObject.Lookup");
    if (!value) {
        return std::nullopt;
    }
    return Value(*object_.document_, object_.document_->impl_->own(std::move(value)));
}

void Object::setNamedValue(WideStringView name, const Value& value) {
    const StringReference key(name);
    check(viewed<Abi::JsonObject>(node_)->SetNamedValue(key.get(), valueOf(value.node_)),
          "JsonObject.SetNamedValue");
}

WideString Object::getNamedString(WideStringView name) const {
    const StringReference key(name);
    ReceivedString text;
    check(viewed<Abi::JsonObject>(node_)->GetNamedString(key.get(), text.receive()),
          "JsonObject.GetNamedString");
    return text.copy();
}

bool Object::getNamedBoolean(WideStringView name) const {
    const StringReference key(name);
    Abi::Boolean value = 0;
    check(viewed<Abi::JsonObject>(node_)->GetNamedBoolean(key.get(), &value),
          "JsonObject.GetNamedBoolean");
    return value != 0;
}

Object Object::getNamedObject(WideStringView name) const {
    const StringReference key(name);
    ComPointer<Abi::JsonObject> object;
    check(viewed<Abi::JsonObject>(node_)->GetNamedObject(key.get(), object.receive()),
          "JsonObject.GetNamedObject");
    return {*document_, document_->impl_->own(query<Abi::JsonValue>(object.get()))};
}

Array Object::getNamedArray(WideStringView name) const {
    const StringReference key(name);
    ComPointer<Abi::JsonArray> array;
    check(viewed<Abi::JsonObject>(node_)->GetNamedArray(key.get(), array.receive()),
          "JsonObject.GetNamedArray");
    return {*document_, document_->impl_->own(query<Abi::JsonValue>(array.get()))};
}

std::uint32_t Object::size() const {
    UINT32 size = 0;
    check(viewed<Abi::JsonMap>(node_)->get_Size(&size), "JsonObject.Size");
    return size;
}

ObjectView Object::getView() const {
    ComPointer<Abi::JsonMapView> view;
    check(viewed<Abi::JsonMap>(node_)->GetView(view.receive()), "JsonObject.GetView");
    return ObjectView(Value(*document_, document_->impl_->own(std::move(view))));
}

void Array::append(const Value& value) {
    check(viewed<Abi::JsonVector>(node_)->Append(valueOf(value.node_)), "JsonArray.Append");
}

void Array::appendSerialised(const std::list<WideString>& texts) {
    for (const WideString& text : texts) {
        append(document_->serialisedObject(text));
    }
}

std::uint32_t Array::size() const {
    UINT32 size = 0;
    check(viewed<Abi::JsonVector>(node_)->get_Size(&size), "JsonArray.Size");
    return size;
}

Value Array::getAt(std::uint32_t index) const {
    ComPointer<Abi::JsonValue> value;
    check(viewed<Abi::JsonVector>(node_)->GetAt(index, value.receive()), "JsonArray.GetAt");
    requireObject(value.get(), "JsonArray.GetAt");
    return {*document_, document_->impl_->own(std::move(value))};
}

Document::Document() {
    static_assert(sizeof(Impl) <= kImplSize);
    impl_ = new (memory_.data()) Impl;
}

Document::~Document() { impl_->~Impl(); }

Object Document::newObject() {
    return {*this, impl_->own(query<Abi::JsonValue>(objectClass.activate().get()))};
}

Array Document::newArray() {
    return {*this, impl_->own(query<Abi::JsonValue>(arrayClass.activate().get()))};
}

Object Document::parseObject(WideStringView text) {
    requireParsable(text);
    return {*this, impl_->own(parse(text))};
}

Value Document::stringValue(WideStringView text) {
    const StringReference units(text);
    ComPointer<Abi::JsonValue> value;
    check(valueClass.statics<Abi::JsonValueStatics>()->CreateStringValue(units.get(),
                                                                         value.receive()),
          "JsonValue.CreateStringValue");
    return {*this, impl_->own(std::move(value))};
}

Value Document::numberValue(double number) {
    requireFinite(number);
    ComPointer<Abi::JsonValue> value;
    check(valueClass.statics<Abi::JsonValueStatics>()->CreateNumberValue(number, value.receive()),
          "JsonValue.CreateNumberValue");
    return {*this, impl_->own(std::move(value))};
}

Value Document::serialisedObject(WideStringView text) {
    // It may hold what is refused in a text from elsewhere, such as an unpaired surrogate of a
    // string value.
    return {*this, impl_->own(parse(text))};
}

}  // namespace Orvel::Analytics::Json
