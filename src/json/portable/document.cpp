#include "json/portable/document.h"

#include <array>
#include <charconv>
#include <cstring>
#include <new>
#include <string>

#include "json/checks.h"
#include "json/portable/serialise.h"
#include "json/raise.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Json {
namespace {

/// The most bytes of UTF-8 for one unit of UTF-16.
constexpr std::size_t kBytesPerUnit = 3;

Node* nodeOf(void* value) { return static_cast<Node*>(value); }

std::string utf8Of(WideStringView text) {
    std::string utf8(Text::utf8Length(text), '\0');
    Text::writeUtf8(text, utf8.data());
    return utf8;
}

WideString wideOf(std::string_view text) {
    WideString wide;
    Text::appendUtf8(wide, text);
    return wide;
}

/// A member of an object, or null. The search begins with `start`, a member, and goes round once.
Node* find(const Node* object, WideStringView name, Node* start) {
    Node* member = start;
    for (std::uint32_t left = object->count; left > 0; --left) {
        if (Text::isSameText(member->name, name)) {
            return member;
        }
        member = member->next != nullptr ? member->next : object->content.children.first;
    }
    return nullptr;
}

Node* find(const Node* object, WideStringView name) {
    return find(object, name, object->content.children.first);
}

Node* require(void* object, WideStringView name, Node::Kind kind) {
    Node* const value = find(nodeOf(object), name);
    if (value == nullptr) {
        raise(Status::kValueNotFound, "The JSON object has no member " + utf8Of(name));
    }
    if (value->kind != kind) {
        raise(Status::kIllegalMethodCall,
              "The JSON object's member " + utf8Of(name) + " has another type");
    }
    return value;
}

}  // namespace

std::string_view Document::Impl::keep(WideStringView text) {
    char* const utf8 = arena.allocate(kBytesPerUnit * text.size());
    const auto size = static_cast<std::size_t>(Text::writeUtf8(text, utf8) - utf8);
    arena.shrinkLast(size);
    return {utf8, size};
}

WideString Value::stringify() const {
    const Node& node = *nodeOf(node_);
    return node.kind == Node::Kind::kNumber ? wideOf(node.content.text) : serialise(node);
}

std::size_t Value::serialisedLength() const { return Json::serialisedLength(*nodeOf(node_)); }

bool ObjectView::hasKey(WideStringView name) const {
    const Node* const object = nodeOf(object_.node_);
    Node* const start = found_ == nullptr ? object->content.children.first : nodeOf(found_);
    Node* const member = find(object, name, start);
    if (member != nullptr) {
        found_ = member;
    }
    return member != nullptr;
}

std::optional<Value> ObjectView::lookup(WideStringView name) const {
    if (!hasKey(name)) {
        raise(Status::kOutOfBounds, "The JSON object has no member " + utf8Of(name));
    }
    return Value(*object_.document_, found_);
}

void Object::setNamedValue(WideStringView name, const Value& value) {
    if (Node* const member = find(nodeOf(node_), name)) {
        member->become(*nodeOf(value.node_));
        return;
    }
    Node* const member = nodeOf(value.node_);
    member->name = document_->impl_->keep(name);
    nodeOf(node_)->append(member);
}

WideString Object::getNamedString(WideStringView name) const {
    return wideOf(require(node_, name, Node::Kind::kString)->content.text);
}

bool Object::getNamedBoolean(WideStringView name) const {
    return require(node_, name, Node::Kind::kBoolean)->content.text == kTrue;
}

Object Object::getNamedObject(WideStringView name) const {
    return {*document_, require(node_, name, Node::Kind::kObject)};
}

Array Object::getNamedArray(WideStringView name) const {
    return {*document_, require(node_, name, Node::Kind::kArray)};
}

std::uint32_t Object::size() const { return nodeOf(node_)->count; }

ObjectView Object::getView() const { return ObjectView(*this); }

void Array::append(const Value& value) { nodeOf(node_)->append(nodeOf(value.node_)); }

void Array::appendSerialised(const std::list<WideString>& texts) {
    if (!texts.empty()) {
        Node* const list = document_->impl_->node(Node::Kind::kSerialisedList);
        list->content.serialisedList = &texts;
        nodeOf(node_)->append(list);
    }
}

std::uint32_t Array::size() const { return nodeOf(node_)->count; }

Value Array::getAt(std::uint32_t index) const {
    if (index >= size()) {
        raise(Status::kOutOfBounds, "The JSON array has no element at that index");
    }
    if (found_ == nullptr || foundAt_ > index) {
        found_ = nodeOf(node_)->content.children.first;
        foundAt_ = 0;
    }
    for (; foundAt_ < index; ++foundAt_) {
        found_ = nodeOf(found_)->next;
    }
    return {*document_, found_};
}

Document::Document() {
    static_assert(sizeof(Impl) <= kImplSize);
    impl_ = new (memory_.data()) Impl;
}

Document::~Document() { impl_->~Impl(); }

Object Document::newObject() { return {*this, impl_->node(Node::Kind::kObject)}; }

Array Document::newArray() { return {*this, impl_->node(Node::Kind::kArray)}; }

Object Document::parseObject(WideStringView text) {
    requireParsable(text);
    char* const utf8 = impl_->arena.allocate(kBytesPerUnit * text.size() + YYJSON_PADDING_SIZE);
    char* const end = Text::writeUtf8(text, utf8);
    std::memset(end, 0, YYJSON_PADDING_SIZE);
    const auto size = static_cast<std::size_t>(end - utf8);
    impl_->arena.shrinkLast(size + YYJSON_PADDING_SIZE);
    return {*this, impl_->parse(utf8, size)};
}

Value Document::stringValue(WideStringView text) {
    return {*this, impl_->node(Node::Kind::kString, impl_->keep(text))};
}

Value Document::numberValue(double number) {
    requireFinite(number);
    constexpr std::size_t kLongest = 32;
    char* const text = impl_->arena.allocate(kLongest);
    const auto written = std::to_chars(text, text + kLongest, number);
    return {*this, impl_->node(Node::Kind::kNumber, {text, written.ptr})};
}

Value Document::serialisedObject(WideStringView text) {
    Node* const made = impl_->node(Node::Kind::kSerialised);
    made->content.serialised = text;
    return {*this, made};
}

}  // namespace Orvel::Analytics::Json
