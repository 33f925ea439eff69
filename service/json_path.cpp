#include "service/json_path.h"

#include <algorithm>

#include "service/json_text.h"

namespace Orvel::Service {

namespace {

/// A path is made for each bad event of a batch, and the names in it may be as long as a
/// registration.
constexpr std::size_t kLongestName = 256;

/// The beginning of a name in UTF-8, with whole characters.
std::string_view beginningOf(std::string_view name) {
    std::size_t end = kLongestName;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80) {
        --end;
    }
    return name.substr(0, end);
}

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           character == '_';
}

bool isPlainName(std::string_view name) {
    return !name.empty() && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), [](char character) {
               return isLetter(character) || (character >= '0' && character <= '9');
           });
}

}  // namespace

void appendPathMember(std::string& path, std::string_view name) {
    const bool isWhole = name.size() <= kLongestName;
    if (isWhole && isPlainName(name)) {
        path += '.';
        path += name;
        return;
    }
    path += "['";
    for (const char character : isWhole ? name : beginningOf(name)) {
        if (character == '\'') {
            path += "\\'";
        } else if (character == '"') {
            path += character;
        } else {
            appendJsonCharacter(path, character);
        }
    }
    path += isWhole ? "']" : "\u2026']";
}

}  // namespace Orvel::Service
