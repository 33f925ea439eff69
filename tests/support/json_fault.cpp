#include "support/json_fault.h"

#include <algorithm>
#include <new>

#include "json/json.h"
#include "json/raise.h"

namespace {

using Orvel::TestSupport::JsonFault;
using Orvel::TestSupport::JsonOperation;

JsonFault* current = nullptr;

void called(JsonOperation operation) {
    current->calls.push_back(operation);
    if (current->failing == operation && std::count(current->calls.begin(), current->calls.end(),
                                                    operation) >= current->failingCall) {
        Orvel::Analytics::Json::raise(current->status, "made to fail");
    }
}

}  // namespace

namespace Orvel::TestSupport {

JsonFault::JsonFault() { current = this; }

JsonFault::~JsonFault() { current = nullptr; }

}  // namespace Orvel::TestSupport

/// Stands in for the library's own backend when a program is linked with it.
namespace Orvel::Analytics::Json {

struct Document::Impl {};

Document::Document() : impl_(new (memory_.data()) Impl) {}
Document::~Document() { impl_->~Impl(); }

Object Document::newObject() {
    called(JsonOperation::NewObject);
    return {*this, nullptr};
}

Array Document::newArray() {
    called(JsonOperation::NewArray);
    return {*this, nullptr};
}

Object Document::parseObject(WideStringView /*text*/) {
    called(JsonOperation::ParseObject);
    return {*this, nullptr};
}

Value Document::stringValue(WideStringView /*text*/) {
    called(JsonOperation::StringValue);
    return {*this, nullptr};
}

Value Document::numberValue(double /*number*/) {
    called(JsonOperation::NumberValue);
    return {*this, nullptr};
}

Value Document::serialisedObject(WideStringView /*text*/) {
    called(JsonOperation::SerialisedObject);
    return {*this, nullptr};
}

WideString Value::stringify() const {
    called(JsonOperation::Stringify);
    return current->serialised;
}

std::size_t Value::serialisedLength() const { return stringify().size(); }

bool ObjectView::hasKey(WideStringView /*name*/) const {
    called(JsonOperation::HasKey);
    return true;
}

std::optional<Value> ObjectView::lookup(WideStringView /*name*/) const {
    called(JsonOperation::Lookup);
    return current->lookupYieldsNothing ? std::nullopt : std::optional(object_);
}

void Object::setNamedValue(WideStringView /*name*/, const Value& /*value*/) {
    called(JsonOperation::SetNamedValue);
}

WideString Object::getNamedString(WideStringView /*name*/) const {
    called(JsonOperation::GetNamedString);
    return {};
}

bool Object::getNamedBoolean(WideStringView /*name*/) const {
    called(JsonOperation::GetNamedBoolean);
    return false;
}

Object Object::getNamedObject(WideStringView /*name*/) const {
    called(JsonOperation::GetNamedObject);
    return *this;
}

Array Object::getNamedArray(WideStringView /*name*/) const {
    called(JsonOperation::GetNamedArray);
    return {*document_, nullptr};
}

std::uint32_t Object::size() const {
    called(JsonOperation::ObjectSize);
    return 1;
}

ObjectView Object::getView() const {
    called(JsonOperation::GetView);
    return ObjectView(*this);
}

void Array::append(const Value& /*value*/) { called(JsonOperation::Append); }

void Array::appendSerialised(const std::list<WideString>& texts) {
    for (const WideString& text : texts) {
        append(document_->serialisedObject(text));
    }
}

std::uint32_t Array::size() const {
    called(JsonOperation::ArraySize);
    return 1;
}

Value Array::getAt(std::uint32_t /*index*/) const {
    called(JsonOperation::GetAt);
    return static_cast<const Value&>(*this);
}

}  // namespace Orvel::Analytics::Json
