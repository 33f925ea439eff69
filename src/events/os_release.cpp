#include "events/os_release.h"

#include <algorithm>

namespace Orvel::Analytics::Events {
namespace {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// A value as the shell would read it, for the quoting that os-release(5) allows.
std::string unquoted(std::string_view value) {
    const char quote = value.empty() ? '\0' : value.front();
    if (value.size() < 2 || (quote != '"' && quote != '\'') || value.back() != quote) {
        return std::string(value);
    }
    value = value.substr(1, value.size() - 2);
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const bool escapes = quote == '"' && value[at] == '\\' && at + 1 < value.size() &&
                             std::string_view("$\"\\`").find(value[at + 1]) != std::string::npos;
        text += value[escapes ? ++at : at];
    }
    return text;
}

std::string_view trimmed(std::string_view line) {
    constexpr std::string_view kBlank = " \t\r";
    const std::size_t first = line.find_first_not_of(kBlank);
    if (first == std::string_view::npos) {
        return {};
    }
    return line.substr(first, line.find_last_not_of(kBlank) - first + 1);
}

}  // namespace

std::optional<std::string> osReleaseValue(std::string_view osRelease, std::string_view variable) {
    std::optional<std::string> value;
    while (!osRelease.empty()) {
        const std::size_t end = std::min(osRelease.find('\n'), osRelease.size());
        const std::string_view line = trimmed(osRelease.substr(0, end));
        osRelease.remove_prefix(std::min(end + 1, osRelease.size()));
        if (line.starts_with(variable) && line.substr(variable.size()).starts_with('=')) {
            value = unquoted(line.substr(variable.size() + 1));
        }
    }
    return value;
}

std::int64_t packVersion(std::string_view version) {
    constexpr std::uint64_t kGreatestNumber = 0xFFFF;
    std::uint64_t packed = 0;
    bool more = true;
    for (int shift = 48; shift >= 0; shift -= 16) {
        std::uint64_t number = 0;
        more = more && !version.empty() && isDigit(version.front());
        while (more && !version.empty() && isDigit(version.front())) {
            const auto digit = static_cast<std::uint64_t>(version.front() - '0');
            number = std::min(number * 10 + digit, kGreatestNumber);
            version.remove_prefix(1);
        }
        packed |= number << shift;
        more = more && version.starts_with('.');
        version.remove_prefix(more ? 1 : 0);
    }
    return static_cast<std::int64_t>(packed);
}

}  // namespace Orvel::Analytics::Events
