#ifndef ORVEL_SERVICE_JSON_TEXT_H
#define ORVEL_SERVICE_JSON_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

/// @file
/// JSON as text: writing strings, and finding the very characters of a value, which an engine that
/// reads values no longer knows.

namespace Orvel::Service {

/// Appends one character of a string, escaped when it must be. Bytes of UTF-8 pass as they are.
void appendJsonCharacter(std::string& out, char character);

/// Appends a string with its quotes, escaping what must be escaped.
void appendJsonString(std::string& out, std::string_view characters);

/// Walks a text that is known to be well-formed JSON.
class JsonCursor {
  public:
    /// Stands on the value that begins at, or after blanks at, that place.
    explicit JsonCursor(std::string_view text, std::size_t position = 0)
        : text_(text), position_(position) {
        skipBlanks();
    }

    /// Goes into an object, to the value of its member number `index`.
    void enterMember(std::size_t index);

    /// Goes into an array, to its first element, or to the array's end when it is empty.
    void enterArray();

    /// The characters of the value; the cursor then stands on the next element of the array around
    /// it, or on the array's end.
    std::string_view takeElement();

    /// The same, when it is known where the characters of a string in the value begin, and how many
    /// objects and arrays of the value are around it: what stands before it is not looked at.
    std::string_view takeElement(std::size_t string, std::size_t depth);

    /// Everything from the value on.
    std::string_view rest() const { return text_.substr(position_); }

  private:
    void skipBlanks();
    void skipString();
    /// Goes to the end of the value, from a place in it with so many objects and arrays around.
    void skipValue(std::size_t depth = 0);
    void skipComma();

    std::string_view text_;
    std::size_t position_;
};

}  // namespace Orvel::Service

#endif
