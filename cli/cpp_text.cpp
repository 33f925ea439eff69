#include "cli/cpp_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

namespace Orvel::Tool {

namespace {

/// Longer names serve no reader, and compilers need not take them.
constexpr std::size_t kLongestName = 100;

bool isUpper(char letter) { return letter >= 'A' && letter <= 'Z'; }
bool isLower(char letter) { return letter >= 'a' && letter <= 'z'; }
bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }
bool isWordCharacter(std::uint32_t point) {
    const char letter = point < 0x80 ? static_cast<char>(point) : ' ';
    return isUpper(letter) || isLower(letter) || isDigit(letter);
}
char toUpper(char letter) {
    return isLower(letter) ? static_cast<char>(letter - 'a' + 'A') : letter;
}
char toLower(char letter) {
    return isUpper(letter) ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The characters of a well-formed text.
std::vector<std::uint32_t> pointsOf(WideStringView text) {
    std::vector<std::uint32_t> points;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::uint32_t unit = text[at];
        const bool isPair = unit >= 0xD800 && unit <= 0xDBFF && at + 1 < text.size();
        points.push_back(isPair ? 0x10000 + ((unit - 0xD800) << 10) + (text[++at] - 0xDC00U)
                                : unit);
    }
    return points;
}

std::vector<std::string> wordsOf(WideStringView text) {
    std::vector<std::string> words;
    bool inWord = false;
    std::size_t size = 0;
    for (const std::uint32_t point : pointsOf(text)) {
        if (size >= kLongestName) {
            break;
        }
        if (point >= 0x80) {
            words.push_back(fmt::format("U{:04X}", point));
            size += words.back().size();
        } else if (isWordCharacter(point)) {
            if (!inWord) {
                words.emplace_back();
            }
            words.back() += static_cast<char>(point);
            ++size;
        }
        inWord = isWordCharacter(point);
    }
    return words;
}

void lowerFirst(std::string& word) {
    // What is written in capitals throughout is one word for a reader.
    if (std::none_of(word.begin(), word.end(), isLower)) {
        std::transform(word.begin(), word.end(), word.begin(), toLower);
    }
    word.front() = toLower(word.front());
}

const std::set<std::string_view>& takenNames() {
    static const std::set<std::string_view> kNames = {
        // Keywords, and other ways to write operators.
        "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break",
        "case", "catch", "char", "char8_t", "char16_t", "char32_t", "class", "compl", "concept",
        "const", "consteval", "constexpr", "constinit", "const_cast", "continue", "co_await",
        "co_return", "co_yield", "decltype", "default", "delete", "do", "double", "dynamic_cast",
        "else", "enum", "explicit", "export", "extern", "false", "float", "for", "friend", "goto",
        "if", "inline", "int", "long", "mutable", "namespace", "new", "noexcept", "not", "not_eq",
        "nullptr", "operator", "or", "or_eq", "private", "protected", "public", "register",
        "reinterpret_cast", "requires", "return", "short", "signed", "sizeof", "static",
        "static_assert", "static_cast", "struct", "switch", "template", "this", "thread_local",
        "throw", "true", "try", "typedef", "typeid", "typename", "union", "unsigned", "using",
        "virtual", "void", "volatile", "wchar_t", "while", "xor", "xor_eq",
        // Macros of the standard library, of compilers, and of the platforms' headers.
        "assert", "errno", "far", "hyper", "i386", "interface", "linux", "major", "minor", "near",
        "small", "stderr", "stdin", "stdout", "unix"};
    return kNames;
}

std::string faultOfComponent(std::string_view name) {
    const auto belongs = [](char letter) {
        return isWordCharacter(static_cast<unsigned char>(letter)) || letter == '_';
    };
    if (name.empty() || isDigit(name.front()) || !std::all_of(name.begin(), name.end(), belongs)) {
        return "is no name";
    }
    if (isTaken(name) || name == "std" || name == "posix" || name.front() == '_' ||
        name.find("__") != std::string_view::npos) {
        return "is a name that C++ keeps to itself";
    }
    return {};
}

}  // namespace

std::string cppLiteral(WideStringView text) {
    std::string literal = "\"";
    for (const std::uint32_t point : pointsOf(text)) {
        if (point == '"' || point == '\\' || point == '?') {
            literal += '\\';  // The question mark, because two of them may begin a trigraph.
            literal += static_cast<char>(point);
        } else if (point >= 0x20 && point < 0x7F) {
            literal += static_cast<char>(point);
        } else if (point < 0xA0) {
            literal += fmt::format("\\{:03o}", point);
        } else if (point < 0x10000) {
            literal += fmt::format("\\u{:04X}", point);
        } else {
            literal += fmt::format("\\U{:08X}", point);
        }
    }
    return literal + '"';
}

std::string camelName(WideStringView text, std::string_view otherwise) {
    std::vector<std::string> words = wordsOf(text);
    if (words.empty() || isDigit(words.front().front())) {
        words.emplace(words.begin(), otherwise);
    }
    lowerFirst(words.front());
    std::string name = words.front();
    std::for_each(words.begin() + 1, words.end(), [&name](const std::string& word) {
        name += toUpper(word.front());
        name += word.substr(1);
    });
    return name;
}

std::string capitalised(std::string name) {
    name.front() = toUpper(name.front());
    return name;
}

std::string DifferentNames::give(const std::string& name) {
    const std::size_t number = ++given_[name];
    return number == 1 ? name : fmt::format("{}_{}", name, number);
}

bool isTaken(std::string_view name) { return takenNames().contains(name); }

std::string faultOfNamespace(std::string_view name) {
    while (true) {
        const std::size_t end = name.find("::");
        const std::string_view component = name.substr(0, end);
        if (const std::string fault = faultOfComponent(component); !fault.empty()) {
            return fmt::format("\"{}\" {}", component, fault);
        }
        if (end == std::string_view::npos) {
            return {};
        }
        name.remove_prefix(end + 2);
    }
}

}  // namespace Orvel::Tool
