#include "service/json_text.h"

namespace Orvel::Service {

namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

/// The place after a string whose opening quote is at `position`; the text's end when it is open.
std::size_t endOfString(std::string_view text, std::size_t position) {
    for (++position;;) {
        const std::size_t quote = text.find('"', position);
        if (quote == std::string_view::npos) {
            return text.size();
        }
        std::size_t escape = quote;
        while (escape > position && text[escape - 1] == '\\') {
            --escape;
        }
        // Of the backslashes before it, each second one is escaped by the one before.
        if ((quote - escape) % 2 == 0) {
            return quote + 1;
        }
        position = quote + 1;
    }
}

constexpr std::string_view kHexDigits = "0123456789abcdef";

}  // namespace

void appendJsonCharacter(std::string& out, char character) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != '"' && byte != '\\') {
        out += character;
        return;
    }
    out += '\\';
    switch (character) {
        case '\b':
            out += 'b';
            break;
        case '\f':
            out += 'f';
            break;
        case '\n':
            out += 'n';
            break;
        case '\r':
            out += 'r';
            break;
        case '\t':
            out += 't';
            break;
        case '"':
        case '\\':
            out += character;
            break;
        default:
            out += "u00";
            out += kHexDigits[byte >> 4];
            out += kHexDigits[byte & 0xF];
    }
}

void appendJsonString(std::string& out, std::string_view characters) {
    out += '"';
    for (const char character : characters) {
        appendJsonCharacter(out, character);
    }
    out += '"';
}

void JsonCursor::skipBlanks() {
    while (position_ < text_.size() && isBlank(text_[position_])) {
        ++position_;
    }
}

void JsonCursor::skipString() { position_ = endOfString(text_, position_); }

void JsonCursor::skipValue(std::size_t depth) {
    while (position_ < text_.size()) {
        const char character = text_[position_];
        if (character == '"') {
            skipString();
            if (depth == 0) {
                return;
            }
            continue;
        }
        if (character == '{' || character == '[') {
            ++depth;
        } else if (character == '}' || character == ']') {
            if (depth == 0) {
                return;
            }
            if (--depth == 0) {
                ++position_;
                return;
            }
        } else if (depth == 0 && (character == ',' || isBlank(character))) {
            return;
        }
        ++position_;
    }
}

void JsonCursor::enterMember(std::size_t index) {
    ++position_;
    skipBlanks();
    for (;; --index) {
        skipString();
        skipBlanks();
        ++position_;
        skipBlanks();
        if (index == 0) {
            return;
        }
        skipValue();
        skipBlanks();
        ++position_;
        skipBlanks();
    }
}

void JsonCursor::enterArray() {
    ++position_;
    skipBlanks();
}

std::string_view JsonCursor::takeElement() {
    const std::size_t begin = position_;
    skipValue();
    const std::string_view element = text_.substr(begin, position_ - begin);
    skipComma();
    return element;
}

std::string_view JsonCursor::takeElement(std::size_t string, std::size_t depth) {
    const std::size_t begin = position_;
    position_ = endOfString(text_, string - 1);
    skipValue(depth);
    const std::string_view element = text_.substr(begin, position_ - begin);
    skipComma();
    return element;
}

void JsonCursor::skipComma() {
    skipBlanks();
    if (position_ < text_.size() && text_[position_] == ',') {
        ++position_;
        skipBlanks();
    }
}

}  // namespace Orvel::Service
