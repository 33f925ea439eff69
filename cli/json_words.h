#ifndef ORVEL_CLI_JSON_WORDS_H
#define ORVEL_CLI_JSON_WORDS_H

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

/// @file
/// JSON in words for people, and in lines for programs.

namespace Orvel::Tool {

/// What a value is, such as "a number".
template <typename Json>
[[nodiscard]] std::string_view kindOf(const Json& value) {
    switch (value.type()) {
        case nlohmann::json::value_t::object:
            return "an object";
        case nlohmann::json::value_t::array:
            return "an array";
        case nlohmann::json::value_t::string:
            return "a text";
        case nlohmann::json::value_t::boolean:
            return "a boolean";
        case nlohmann::json::value_t::null:
            return "null";
        default:
            return "a number";
    }
}

/// Why a text is not JSON, in the parser's own words without its error number and position.
[[nodiscard]] inline std::string reasonOf(const nlohmann::json::exception& error) {
    const std::string_view whole = error.what();
    const std::size_t number = whole.find("] ");
    const std::size_t syntax = whole.find("syntax error");
    if (syntax != std::string_view::npos) {
        return std::string(whole.substr(syntax));
    }
    return std::string(number == std::string_view::npos ? whole : whole.substr(number + 2));
}

/// A value on one line, in ASCII, so that no text in it can steer a terminal. File names and
/// messages of the system need not be UTF-8: the bytes that are not are replaced.
template <typename Json>
[[nodiscard]] std::string jsonLine(const Json& value) {
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace Orvel::Tool

#endif
