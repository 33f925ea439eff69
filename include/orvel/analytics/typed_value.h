#ifndef ORVEL_ANALYTICS_TYPED_VALUE_H
#define ORVEL_ANALYTICS_TYPED_VALUE_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "orvel/analytics/json_text.h"
#include "orvel/analytics/text.h"

/// @file
/// The values that the fields of typed events take. Each holds a value that has a JSON text, which
/// is all that an event needs of it.

namespace Orvel::Analytics::TypedEvents {

/// What a text in UTF-8 can be given as: `std::string`, `std::string_view`, `const char*`.
template <typename T>
concept Utf8Text = std::convertible_to<const T&, std::string_view> && !std::is_null_pointer_v<T>;

/// What a text in UTF-16 can be given as: `WideString`, `WideStringView`, `const WideChar*`.
template <typename T>
concept WideText = std::convertible_to<const T&, WideStringView> && !std::is_null_pointer_v<T>;

/// The integer types that are numbers and neither truth values nor characters.
template <typename T>
concept Number = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> &&
                 !std::same_as<T, wchar_t> && !std::same_as<T, char8_t> &&
                 !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// The integer types whose every value is a number of 32 bits with a sign.
template <typename T>
concept NumberOf32Bits = Number<T> && std::numeric_limits<T>::digits <= 31;

/// The value of an integer field. A type that has values beyond 32 bits, a number with a fraction
/// or a truth value is refused when the program is compiled.
class Integer {
  public:
    /// @param number any value of its type.
    template <NumberOf32Bits T>
    constexpr Integer(T number) noexcept : number_(number) {}
    /// Refuses every other type of number.
    template <typename T>
    requires(std::is_arithmetic_v<T> && !NumberOf32Bits<T>) Integer(T number)
    = delete;

    /// The number in JSON. @throws std::bad_alloc
    [[nodiscard]] WideString json() const { return JsonText::number(number_); }

  private:
    std::int32_t number_;
};

/// The value of a varchar field: a text that somebody else owns, in UTF-8 or UTF-16, as long as the
/// field's type allows. A text is measured as the library measures it: in UTF-16 code units, those
/// of its escapes in JSON included, so that a quotation mark counts twice.
///
/// A literal that is too long or not well-formed is refused when the program is compiled. Of any
/// other text, `CollectEvent` judges the length.
/// @tparam Longest the most code units that the field takes.
template <std::size_t Longest = std::numeric_limits<std::size_t>::max()>
class Text {
  public:
    /// A literal. Its length is checked here, once and for all.
    template <std::size_t Size>
    consteval Text(const char (&literal)[Size]) : utf8_(literal) {
        JsonText::requireLiteral(utf8_, Longest);
    }
    /// A wide literal, such as `ORVEL_TEXT("text")`.
    template <std::size_t Size>
    consteval Text(const WideChar (&literal)[Size]) : wide_(literal) {
        JsonText::requireLiteral(wide_, Longest);
    }
    /// Any other text in UTF-8. An array of characters that is no literal needs to be named as a
    /// `std::string_view` of it.
    template <Utf8Text T>
    requires(!std::is_array_v<T>) constexpr Text(const T& utf8) : utf8_(utf8) {}
    /// Any other text in UTF-16.
    template <WideText T>
    requires(!std::is_array_v<T>) constexpr Text(const T& wide) : wide_(wide) {}

    /// The text as a string of JSON.
    /// @throws std::invalid_argument naming the place where the text is not well-formed.
    /// @throws std::bad_alloc, std::length_error
    [[nodiscard]] WideString json() const {
        return wide_.data() == nullptr ? JsonText::string(utf8_) : JsonText::string(wide_);
    }

  private:
    std::string_view utf8_;
    WideStringView wide_;
};

/// The value of a field of any other type: a number, a truth value, a text, or an array or object
/// of such values. It owns what it holds.
class Value {
  public:
    /// A truth value.
    template <std::same_as<bool> T>
    Value(T truth) : json_(JsonText::ascii(truth ? "true" : "false")) {}
    /// An integer number of any size.
    template <Number T>
    Value(T number) : json_(JsonText::number(number)) {}
    /// A number with a fraction, with as many digits as it takes to read it back unchanged.
    /// @throws std::invalid_argument when it is infinite or no number: JSON has neither.
    template <std::floating_point T>
    Value(T number) : json_(JsonText::number(number)) {}
    /// A text in UTF-8. @throws std::invalid_argument when it is not well-formed.
    template <Utf8Text T>
    Value(const T& utf8) : json_(JsonText::string(std::string_view(utf8))) {}
    /// A text in UTF-16. @throws std::invalid_argument when it is not well-formed.
    template <WideText T>
    Value(const T& wide) : json_(JsonText::string(WideStringView(wide))) {}

    /// An array of these values.
    [[nodiscard]] static Value array(const std::vector<Value>& elements) {
        Value whole;
        for (const Value& element : elements) {
            whole.json_ += whole.json_.empty() ? ORVEL_TEXT('[') : ORVEL_TEXT(',');
            whole.json_ += element.json_;
        }
        whole.json_ += elements.empty() ? ORVEL_TEXT("[]") : ORVEL_TEXT("]");
        return whole;
    }
    /// An object of these members, whose names are in UTF-8. Of members of one name the last
    /// counts.
    /// @throws std::invalid_argument when a name is not well-formed.
    [[nodiscard]] static Value object(const std::vector<std::pair<std::string, Value>>& members) {
        Value whole;
        for (const auto& [name, value] : members) {
            whole.json_ += whole.json_.empty() ? ORVEL_TEXT('{') : ORVEL_TEXT(',');
            whole.json_ += JsonText::string(std::string_view(name)) + ORVEL_TEXT(':');
            whole.json_ += value.json_;
        }
        whole.json_ += members.empty() ? ORVEL_TEXT("{}") : ORVEL_TEXT("}");
        return whole;
    }

    /// The value in JSON. @throws std::bad_alloc
    [[nodiscard]] WideString json() const { return json_; }

  private:
    Value() = default;

    WideString json_;
};

}  // namespace Orvel::Analytics::TypedEvents

#endif
