#ifndef ORVEL_CLI_CPP_TEXT_H
#define ORVEL_CLI_CPP_TEXT_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "orvel/analytics/text.h"

/// @file
/// Texts of any kind as parts of C++ sources, which are plain ASCII.

namespace Orvel::Tool {

/// A text as a string literal, quotes included. It also stands well in a comment of one line.
/// @param text well-formed.
[[nodiscard]] std::string cppLiteral(WideStringView text);

/// A name made of what is a letter or digit of ASCII in a text, in the manner `likeThisOne`. Every
/// other character of ASCII parts two words, and every character beyond it becomes a word of its
/// code point, such as `U00E9`. No two of a text's words are joined by anything.
/// @param otherwise the name of a text that has no such character, and the first word of one that
///     begins with a digit.
[[nodiscard]] std::string camelName(WideStringView text, std::string_view otherwise);

/// The same name in the manner `LikeThisOne`.
[[nodiscard]] std::string capitalised(std::string name);

/// Names that are all different.
class DifferentNames {
  public:
    /// @param name as `camelName` makes it, and so without an underscore.
    /// @return the name itself or, where it was given out before, the name with a number at its
    /// end.
    [[nodiscard]] std::string give(const std::string& name);

  private:
    std::map<std::string, std::size_t> given_;
};

/// Whether a name is a keyword, or one that a common header makes a macro of.
[[nodiscard]] bool isTaken(std::string_view name);

/// Why no namespace can have this name; empty when one can.
[[nodiscard]] std::string faultOfNamespace(std::string_view name);

}  // namespace Orvel::Tool

#endif
