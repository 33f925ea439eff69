#ifndef ORVEL_CLI_JSON_PLACES_H
#define ORVEL_CLI_JSON_PLACES_H

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// Where something stands in a JSON text, for messages to whoever wrote it.

namespace Orvel::Tool {

/// The column, in characters from 1, of a byte of a text in UTF-8 within its line.
[[nodiscard]] std::size_t columnOf(std::string_view text, std::size_t byte);

/// Line and column of a byte, such as "3:14".
[[nodiscard]] std::string lineAndColumn(std::string_view text, std::size_t byte);

/// The way from a document to a value in it: the names of members, and the numbers of elements.
using JsonPath = std::vector<std::string>;

/// A part of a text, as bytes from its beginning.
struct JsonPlace {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// What is found at a path. Of members of one name the last counts.
struct JsonFinding {
    /// The name of the member that the path ends with, with its quotes.
    std::optional<JsonPlace> name;
    /// The value.
    std::optional<JsonPlace> value;
};

/// Looks for a value in a text. What is no JSON is read as far as it is.
[[nodiscard]] JsonFinding findInJson(std::string_view text, JsonPath path);

/// Why a text is not JSON.
struct JsonFault {
    /// The byte at which it stops being JSON; its size when it ends too early.
    std::size_t byte = 0;
    /// The reason in the parser's words.
    std::string reason;
};

/// Judges a text by the parser's opinion, whatever its nesting.
[[nodiscard]] std::optional<JsonFault> faultOfJson(std::string_view text);

/// A text that shows how far its reader came.
class WatchedText {
  public:
    explicit WatchedText(std::string_view text) : text_(text), reached_(text.data()) {}
    WatchedText(const WatchedText&) = delete;
    WatchedText& operator=(const WatchedText&) = delete;

    /// Reads a character at a time. Copies share how far they came.
    class Iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = char;
        using difference_type = std::ptrdiff_t;
        using pointer = const char*;
        using reference = const char&;

        Iterator(const char* at, const char** reached) : at_(at), reached_(reached) {}
        reference operator*() const { return *at_; }
        Iterator& operator++() {
            *reached_ = ++at_;
            return *this;
        }
        Iterator operator++(int) {
            Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return at_ == other.at_; }

      private:
        const char* at_;
        const char** reached_;
    };

    Iterator begin() { return {text_.data(), &reached_}; }
    Iterator end() { return {text_.data() + text_.size(), &reached_}; }

    /// To be called once the parser has told of a token, for each: the byte at which it begins.
    std::size_t nextToken();
    /// The bytes read so far.
    [[nodiscard]] std::size_t reached() const {
        return static_cast<std::size_t>(reached_ - text_.data());
    }

  private:
    std::string_view text_;
    const char* reached_;
    std::size_t lastEnd_ = 0;
};

}  // namespace Orvel::Tool

#endif
