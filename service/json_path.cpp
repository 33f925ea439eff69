#include "service/json_path.h"

#include <algorithm>

#include "service/json_text.h"

namespace Orvel::Service {

namespace {

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
    if (isPlainName(name)) {
        path += '.';
        path += name;
        return;
    }
    path += "['";
    for (const char character : name) {
        if (character == '\'') {
            path += "\\'";
        } else if (character == '"') {
            path += character;
        } else {
            appendJsonCharacter(path, character);
        }
    }
    path += "']";
}

}  // namespace Orvel::Service
