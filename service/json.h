#ifndef ORVEL_SERVICE_JSON_H
#define ORVEL_SERVICE_JSON_H

#include <yyjson.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

/// @file
/// Reading JSON: documents that own their values, and values that borrow from a document.
///
/// Numbers are kept as they are written, so no digit of one ever changes. Of two members with one
/// name the last counts.

namespace Orvel::Service {

/// How many levels of objects and arrays a text may nest.
inline constexpr std::size_t kDeepestJson = 1040;

/// One value of a document; valid as long as the document. A default-made one is no value.
class JsonValue {
  public:
    JsonValue() = default;
    explicit JsonValue(yyjson_val* value) : value_(value) {}

    explicit operator bool() const { return value_ != nullptr; }
    bool isNull() const { return yyjson_is_null(value_); }
    bool isObject() const { return yyjson_is_obj(value_); }
    bool isArray() const { return yyjson_is_arr(value_); }

    /// Elements of an array or members of an object, duplicates included.
    std::size_t size() const { return unsafe_yyjson_get_len(value_); }

    /// The characters of a string, unescaped, or nothing when the value is no string.
    std::optional<std::string_view> string() const {
        return yyjson_is_str(value_) ? std::optional{content()} : std::nullopt;
    }
    /// The digits of a number as written, or nothing when the value is no number.
    std::optional<std::string_view> number() const {
        return yyjson_is_raw(value_) ? std::optional{content()} : std::nullopt;
    }

    /// Calls `visit(std::string_view name, JsonValue value)` for every member, in the text's order.
    template <typename Visit>
    void forEachMember(Visit visit) const {
        yyjson_obj_iter members = yyjson_obj_iter_with(value_);
        while (yyjson_val* name = yyjson_obj_iter_next(&members)) {
            visit(JsonValue(name).content(), JsonValue(yyjson_obj_iter_get_val(name)));
        }
    }

    /// Calls `visit(JsonValue element)` for every element, in order.
    template <typename Visit>
    void forEachElement(Visit visit) const {
        yyjson_arr_iter elements = yyjson_arr_iter_with(value_);
        while (yyjson_val* element = yyjson_arr_iter_next(&elements)) {
            visit(JsonValue(element));
        }
    }

    /// A member and its place among the members as they are written.
    struct Member;
    /// The member of that name that counts; its value is no value when there is none.
    Member member(std::string_view name) const;

    /// The name that is written last; nothing when there are no members or the value is no object.
    std::optional<std::string_view> lastName() const;

    /// How many UTF-16 code units the value has when it is written compactly: no blanks, only what
    /// must be escaped escaped (and in its short form where there is one), duplicates dropped.
    std::size_t compactLength() const;

    /// Whether it has more than so many levels of objects and arrays, its own included.
    bool nestsDeeper(std::size_t levels) const;

  private:
    /// A string and a number as written are kept alike.
    std::string_view content() const {
        return {unsafe_yyjson_get_str(value_), unsafe_yyjson_get_len(value_)};
    }

    yyjson_val* value_ = nullptr;
};

struct JsonValue::Member {
    JsonValue value;
    std::size_t index = 0;
};

/// A text that has been read.
class JsonDocument {
  public:
    /// Reads a text that must be one JSON object of at most `kDeepestJson` levels.
    /// @throws Refusal MalformedJson for any other text; std::bad_alloc.
    static JsonDocument parseObject(std::string_view text);

    /// Reads a text that this service itself has written.
    /// @throws std::runtime_error when it is no JSON.
    static JsonDocument parseOwn(std::string_view text);

    JsonValue root() const { return JsonValue(yyjson_doc_get_root(document_.get())); }

    /// The place in the text of the first of a string's characters, which a value of this document
    /// has given.
    std::size_t placeOf(std::string_view characters) const {
        return static_cast<std::size_t>(characters.data() - text_.get());
    }

  private:
    struct Free {
        void operator()(yyjson_doc* document) const { yyjson_doc_free(document); }
    };
    using Handle = std::unique_ptr<yyjson_doc, Free>;

    explicit JsonDocument(std::string_view text);

    /// A copy of the text, in which the engine puts the strings' characters where they were
    /// written.
    std::unique_ptr<char[]> text_;
    Handle document_;
};

}  // namespace Orvel::Service

#endif
