#ifndef ORVEL_EXAMPLES_PACKAGE_HISTORY_LOG_FILES_H
#define ORVEL_EXAMPLES_PACKAGE_HISTORY_LOG_FILES_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// @file
/// The log on disk: the current file and the older ones that log rotation has put beside it.

namespace PackageHistory {

/// The files of a log that exist, oldest first: for `dpkg.log` they are …, `dpkg.log.2.gz`,
/// `dpkg.log.1`, `dpkg.log`.
std::vector<std::filesystem::path> findLogFiles(const std::filesystem::path& log);

/// Hands every line of a plain or gzip-compressed file to `take`, without its line end.
/// @throws std::runtime_error naming the file when it cannot be read to its end; the lines before
///     the failure have been handed over.
void forEachLine(const std::filesystem::path& file,
                 const std::function<void(const std::string& line)>& take);

}  // namespace PackageHistory

#endif
