#ifndef ORVEL_ANALYTICS_TESTING_VALUE_H
#define ORVEL_ANALYTICS_TESTING_VALUE_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "orvel/analytics/testing/export.h"

/// @file
/// The values that a service was sent.

namespace Orvel::Analytics::Testing {

/// A whole number, which a truth value and a character are not.
template <typename Number>
concept WholeNumber =
    std::integral<Number> && !std::same_as<Number, bool> && !std::same_as<Number, char> &&
    !std::same_as<Number, wchar_t> && !std::same_as<Number, char8_t> &&
    !std::same_as<Number, char16_t> && !std::same_as<Number, char32_t>;

/// A value of JSON as it was written. A plain value that owns all that is in it. Different values
/// may be used on different threads, and one that nobody changes on several. What is not `noexcept`
/// may raise `std::bad_alloc`.
///
/// What a test writes down becomes a value by itself, so that `event.values.at("button") == "save"`
/// compares. Strings are UTF-8 here; an unpaired surrogate of what was sent is U+FFFD.
class ORVEL_ANALYTICS_TESTING_EXPORT Value {
  public:
    /// What JSON knows.
    enum class Kind {
        /// `null`.
        Null,
        /// `true` or `false`.
        Boolean,
        /// A number, kept as it was written.
        Number,
        /// A string.
        String,
        /// A list of values.
        Array,
        /// Values with names.
        Object,
    };

    /// Null.
    Value() noexcept;
    /// Null.
    Value(std::nullptr_t) noexcept;
    /// A string. @param text UTF-8, not null.
    Value(const char* text);
    /// A string. @param text UTF-8.
    Value(std::string text);
    /// A string. @param text UTF-8.
    Value(std::string_view text);
    /// `true` or `false`.
    template <std::same_as<bool> Truth>
    Value(Truth truth) : Value(Kind::Boolean, truth ? "true" : "false") {}
    /// A number without a fraction.
    template <WholeNumber Number>
    Value(Number number) : Value(Kind::Number, std::to_string(number)) {}
    /// How a number with a fraction is written is not told by its value: see `number`.
    template <std::floating_point Number>
    Value(Number number) = delete;
    /// Copies all that is in the value. @throws std::bad_alloc
    Value(const Value& other);
    /// Takes over what is in `other`, which can then only be assigned to or destroyed.
    Value(Value&& other) noexcept;
    /// Copies all that is in the value. @throws std::bad_alloc
    Value& operator=(const Value& other);
    /// Takes over what is in `other`, which can then only be assigned to or destroyed.
    Value& operator=(Value&& other) noexcept;
    /// Releases all that is in the value.
    ~Value();

    /// A number as it is written, such as `1.50`.
    /// @throws std::invalid_argument when that is no number of JSON.
    [[nodiscard]] static Value number(std::string_view written);

    /// Reads one value of JSON (RFC 8259). Of members with equal names the last one's value counts.
    /// @param json UTF-8.
    /// @throws std::invalid_argument when the text is something else, and where.
    [[nodiscard]] static Value parse(std::string_view json);

    /// What the value is.
    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    /// Whether the value is null.
    [[nodiscard]] bool isNull() const noexcept { return kind_ == Kind::Null; }

    /// A boolean's truth. @throws std::logic_error for a value of another kind.
    [[nodiscard]] bool boolean() const;
    /// A string's characters in UTF-8. @throws std::logic_error for a value of another kind.
    [[nodiscard]] const std::string& string() const;
    /// A number as it was written. @throws std::logic_error for a value of another kind.
    [[nodiscard]] const std::string& written() const;
    /// A number of 64 bits that is written without fraction and exponent; nothing for every other
    /// value.
    [[nodiscard]] std::optional<std::int64_t> integer() const noexcept;

    /// The elements of an array, or the values of an object's members in the order of `names`.
    /// Empty for a value of another kind.
    [[nodiscard]] const std::vector<Value>& elements() const noexcept { return elements_; }
    /// The names of an object's members, as they came. Empty for a value of another kind.
    [[nodiscard]] const std::vector<std::string>& names() const noexcept { return names_; }
    /// How many elements or members there are.
    [[nodiscard]] std::size_t size() const noexcept { return elements_.size(); }

    /// The value of an object's member, which lives as long as the object stays unchanged; null
    /// when there is no such member, or no object.
    [[nodiscard]] const Value* find(std::string_view name) const noexcept;
    /// The value of an object's member. @throws std::out_of_range when there is no such member.
    [[nodiscard]] const Value& at(std::string_view name) const;
    /// An array's element. @throws std::out_of_range when there is no such element.
    [[nodiscard]] const Value& at(std::size_t index) const;

    /// Takes a member out of an object.
    /// @return its value, or null when there was no such member.
    Value take(std::string_view name);

    /// The value as JSON without blanks, in UTF-8.
    [[nodiscard]] std::string json() const;

    /// Whether two values are of one kind and have equal content: numbers as they are written,
    /// elements in their order, members in any order.
    bool operator==(const Value& other) const noexcept;

  private:
    friend class ValueBuilder;

    Value(Kind kind, std::string text);

    Kind kind_;
    // A string's characters; the spelling of a number or a boolean.
    std::string text_;
    std::vector<Value> elements_;
    std::vector<std::string> names_;
};

/// Writes a value as `Value::json` gives it, which is how GoogleTest prints one.
// Not in the library: a DLL may have a C++ runtime of its own, in which this stream is none.
inline std::ostream& operator<<(std::ostream& out, const Value& value) {
    return out << value.json();
}

}  // namespace Orvel::Analytics::Testing

#endif
