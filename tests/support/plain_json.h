#ifndef ORVEL_SUPPORT_PLAIN_JSON_H
#define ORVEL_SUPPORT_PLAIN_JSON_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Orvel::TestSupport {

/// A JSON value as it was written, read by another JSON library than those of the code under test.
struct PlainJson {
    enum class Kind { kNull, kBoolean, kNumber, kString, kArray, kObject };

    Kind kind = Kind::kNull;
    /// A string's characters in UTF-8; the spelling of a number or a boolean.
    std::string text;
    /// An array's elements; the values of an object's members.
    std::vector<PlainJson> values;
    /// The names of an object's members.
    std::vector<std::string> names;

    /// The member of that name, or null.
    [[nodiscard]] const PlainJson* member(std::string_view name) const;
    /// Adds a member, or replaces the value of the member of that name.
    void set(std::string name, PlainJson value);

    bool operator==(const PlainJson&) const = default;
};

[[nodiscard]] PlainJson plainString(std::string text);

/// An object with one member.
[[nodiscard]] PlainJson plainObject(std::string name, PlainJson value);

/// Which numbers a text may hold: those that double can hold, or all, which are kept as written.
enum class Numbers { kOfDouble, kAny };

/// Reads a text of JSON (RFC 8259). Of members with equal names the last one's value counts, in the
/// place of the first.
/// @return nothing when the text is no JSON, begins with a byte order mark, nests deeper, or,
/// unless
///     it may hold any, holds a number beyond the range of double, one too small to tell from zero
///     included.
[[nodiscard]] std::optional<PlainJson> readPlainJson(std::string_view text, std::size_t deepest,
                                                     Numbers numbers = Numbers::kOfDouble);

/// The value without blanks and with no escapes but the necessary ones, in their short form where
/// there is one.
[[nodiscard]] std::string plainText(const PlainJson& value);

/// How many UTF-16 code units that text has.
[[nodiscard]] std::size_t plainLength(const PlainJson& value);

}  // namespace Orvel::TestSupport

#endif
