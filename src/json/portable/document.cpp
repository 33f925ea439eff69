#include "json/portable/document.h"

#include <array>
#include <charconv>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

#include "json/checks.h"
#include "json/raise.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Json {
namespace {

/// Stands for an object that is a text already: a byte that the engine escapes in strings and
/// writes nowhere else, followed by the bytes of the view of that text.
constexpr char kSplice = '\x01';
constexpr std::size_t kViewSize = sizeof(WideStringView);
constexpr std::size_t kSpliceSize = 1 + kViewSize;
static_assert(std::is_trivially_copyable_v<WideStringView>);

yyjson_mut_val* engineValue(void* node) { return static_cast<yyjson_mut_val*>(node); }

std::string utf8Of(WideStringView text) {
    std::string utf8(Text::utf8Length(text), '\0');
    Text::writeUtf8(text, utf8.data());
    return utf8;
}

WideString wideOf(yyjson_mut_val* value) {
    WideString wide;
    Text::appendUtf8(wide, {yyjson_mut_get_str(value), yyjson_mut_get_len(value)});
    return wide;
}

yyjson_mut_val* find(yyjson_mut_val* object, WideStringView name) {
    const std::string key = utf8Of(name);
    return yyjson_mut_obj_getn(object, key.data(), key.size());
}

yyjson_mut_val* require(yyjson_mut_val* object, WideStringView name,
                        bool (*isOfType)(yyjson_mut_val*)) {
    yyjson_mut_val* const value = find(object, name);
    if (value == nullptr) {
        raise(Status::kValueNotFound, "The JSON object has no member " + utf8Of(name));
    }
    if (!isOfType(value)) {
        raise(Status::kIllegalMethodCall,
              "The JSON object's member " + utf8Of(name) + " has another type");
    }
    return value;
}

/// Widens serialised text and puts in the objects that are texts already.
WideString widen(std::string_view serialised, std::size_t splicedUnits) {
    WideString wide;
    wide.reserve(serialised.size() + splicedUnits);
    std::size_t splice = serialised.find(kSplice);
    while (splice != std::string_view::npos) {
        Text::appendUtf8(wide, serialised.substr(0, splice));
        WideStringView text;
        std::memcpy(&text, serialised.data() + splice + 1, kViewSize);
        wide.append(text);
        serialised.remove_prefix(splice + kSpliceSize);
        splice = serialised.find(kSplice);
    }
    Text::appendUtf8(wide, serialised);
    return wide;
}

}  // namespace

yyjson_mut_val* orBadAlloc(yyjson_mut_val* value) {
    orBadAlloc(value != nullptr);
    return value;
}

void orBadAlloc(bool done) {
    if (!done) {
        throw std::bad_alloc();
    }
}

Document::Impl::Impl() : values(yyjson_mut_doc_new(&allocator)) { orBadAlloc(values != nullptr); }

std::string_view Document::Impl::keep(WideStringView text) {
    const std::size_t size = Text::utf8Length(text);
    char* const utf8 = arena.allocate(size);
    Text::writeUtf8(text, utf8);
    return {utf8, size};
}

WideString Value::stringify() const {
    const Document::Impl& document = *document_->impl_;
    std::size_t size = 0;
    yyjson_write_err error{};
    // What the engine calls invalid Unicode are unpaired surrogates, which stay as they are.
    char* const text = yyjson_mut_val_write_opts(
        engineValue(node_), YYJSON_WRITE_ALLOW_INVALID_UNICODE, &document.allocator, &size, &error);
    orBadAlloc(text != nullptr);
    WideString wide = widen({text, size}, document.splicedUnits);
    document.allocator.free(document.allocator.ctx, text);
    return wide;
}

bool ObjectView::hasKey(WideStringView name) const {
    return find(engineValue(object_.node_), name) != nullptr;
}

std::optional<Value> ObjectView::lookup(WideStringView name) const {
    yyjson_mut_val* const value = find(engineValue(object_.node_), name);
    if (value == nullptr) {
        raise(Status::kOutOfBounds, "The JSON object has no member " + utf8Of(name));
    }
    return Value(*object_.document_, value);
}

void Object::setNamedValue(WideStringView name, const Value& value) {
    Document::Impl& document = *document_->impl_;
    const std::string_view text = document.keep(name);
    yyjson_mut_val* const key =
        orBadAlloc(yyjson_mut_strn(document.values, text.data(), text.size()));
    yyjson_mut_val* const object = engineValue(node_);
    if (!yyjson_mut_obj_replace(object, key, engineValue(value.node_))) {
        orBadAlloc(yyjson_mut_obj_add(object, key, engineValue(value.node_)));
    }
}

WideString Object::getNamedString(WideStringView name) const {
    return wideOf(require(engineValue(node_), name, yyjson_mut_is_str));
}

bool Object::getNamedBoolean(WideStringView name) const {
    return yyjson_mut_get_bool(require(engineValue(node_), name, yyjson_mut_is_bool));
}

Object Object::getNamedObject(WideStringView name) const {
    return {*document_, require(engineValue(node_), name, yyjson_mut_is_obj)};
}

Array Object::getNamedArray(WideStringView name) const {
    return {*document_, require(engineValue(node_), name, yyjson_mut_is_arr)};
}

std::uint32_t Object::size() const {
    return static_cast<std::uint32_t>(yyjson_mut_obj_size(engineValue(node_)));
}

ObjectView Object::getView() const { return ObjectView(*this); }

void Array::append(const Value& value) {
    orBadAlloc(yyjson_mut_arr_append(engineValue(node_), engineValue(value.node_)));
}

std::uint32_t Array::size() const {
    return static_cast<std::uint32_t>(yyjson_mut_arr_size(engineValue(node_)));
}

Value Array::getAt(std::uint32_t index) const {
    yyjson_mut_val* const value = yyjson_mut_arr_get(engineValue(node_), index);
    if (value == nullptr) {
        raise(Status::kOutOfBounds, "The JSON array has no element at that index");
    }
    return {*document_, value};
}

Document::Document() : impl_(std::make_unique<Impl>()) {}

Document::~Document() = default;

Object Document::newObject() { return {*this, orBadAlloc(yyjson_mut_obj(impl_->values))}; }

Array Document::newArray() { return {*this, orBadAlloc(yyjson_mut_arr(impl_->values))}; }

Object Document::parseObject(WideStringView text) {
    requireParsable(text);
    const std::size_t size = Text::utf8Length(text);
    char* const utf8 = impl_->arena.allocate(size + YYJSON_PADDING_SIZE);
    std::memset(Text::writeUtf8(text, utf8), 0, YYJSON_PADDING_SIZE);
    return {*this, impl_->parse(utf8, size)};
}

Value Document::stringValue(WideStringView text) {
    const std::string_view utf8 = impl_->keep(text);
    return {*this, orBadAlloc(yyjson_mut_strn(impl_->values, utf8.data(), utf8.size()))};
}

Value Document::numberValue(double number) {
    requireFinite(number);
    std::array<char, 32> text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number);
    return {*this,
            orBadAlloc(yyjson_mut_rawncpy(impl_->values, text.data(),
                                          static_cast<std::size_t>(written.ptr - text.data())))};
}

Value Document::serialisedObject(WideStringView text) {
    char* const splice = impl_->arena.allocate(kSpliceSize);
    *splice = kSplice;
    std::memcpy(splice + 1, &text, kViewSize);
    impl_->splicedUnits += text.size();
    return {*this, orBadAlloc(yyjson_mut_rawn(impl_->values, splice, kSpliceSize))};
}

}  // namespace Orvel::Analytics::Json
