#ifndef ORVEL_CLI_OUTPUT_FILE_H
#define ORVEL_CLI_OUTPUT_FILE_H

#include <filesystem>
#include <string>
#include <string_view>

/// @file
/// Files that the tool writes.

namespace Orvel::Tool {

/// Makes a folder, and those that it stands in, where there is none.
/// @param name the folder's name as the command line has it.
/// @return its path.
/// @throws Failure with `ExitStatus::Usage` when there can be none.
std::filesystem::path makeFolder(const std::string& name);

/// Gives a file this content, so that whoever looks finds the old content or the new and nothing in
/// between. A file that has it already is not touched.
/// @return whether it was written.
/// @throws Failure with `ExitStatus::Failed`; the file is as it was then.
bool writeFile(const std::filesystem::path& path, std::string_view content);

/// A path in words, in UTF-8.
std::string nameOf(const std::filesystem::path& path);

}  // namespace Orvel::Tool

#endif
