#ifndef ORVEL_EVENTS_OS_RELEASE_H
#define ORVEL_EVENTS_OS_RELEASE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The operating system's own description of itself, os-release(5).
namespace Orvel::Analytics::Events {

/// The value of a variable in the text of an os-release file, unquoted; the last assignment wins.
std::optional<std::string> osReleaseValue(std::string_view osRelease, std::string_view variable);

/// Packs the leading numbers of a version such as `22.04`, at most four and each at most 65,535,
/// into 16 bits each from the most significant down.
std::int64_t packVersion(std::string_view version);

}  // namespace Orvel::Analytics::Events

#endif
