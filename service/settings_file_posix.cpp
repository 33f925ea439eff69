#include <cstdlib>

#include "service/settings_file.h"

namespace Orvel::Service {

namespace {

std::optional<std::filesystem::path> configurationFolder(bool isRoot) {
    if (isRoot) {
        return "/etc";
    }
    const char* configuration = std::getenv("XDG_CONFIG_HOME");
    if (configuration != nullptr && *configuration == '/') {
        return configuration;
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && *home == '/') {
        return std::filesystem::path(home) / ".config";
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::filesystem::path> defaultSettingsFile(bool isRoot) {
    const auto folder = configurationFolder(isRoot);
    if (!folder) {
        return std::nullopt;
    }
    auto file = *folder / "orvel-analytics/settings.toml";
    // A link that leads nowhere is there: whoever made it means a file to be read.
    return exists(symlink_status(file)) ? std::optional{std::move(file)} : std::nullopt;
}

}  // namespace Orvel::Service
