#ifndef ORVEL_SERVICE_SETTINGS_FILE_H
#define ORVEL_SERVICE_SETTINGS_FILE_H

#include <filesystem>
#include <optional>

#include "service/settings.h"

namespace Orvel::Service {

/// The settings file that is read when none is named: /etc/orvel-analytics/settings.toml for root,
/// for any other user orvel-analytics/settings.toml in $XDG_CONFIG_HOME, or in ~/.config when that
/// is not set to an absolute path.
/// @return nothing when it is not there.
/// @throws std::filesystem::filesystem_error when it cannot be told whether it is there.
std::optional<std::filesystem::path> defaultSettingsFile(bool isRoot);

/// Reads a settings file in TOML. What it does not name has its default; what is not known in it is
/// refused.
/// @throws std::system_error when the file cannot be read; std::runtime_error, whose text is
///     `FILE:LINE:COLUMN: what`, when something in it is wrong.
Settings readSettings(const std::filesystem::path& file);

}  // namespace Orvel::Service

#endif
