#ifndef ORVEL_SERVICE_DATABASE_FILES_H
#define ORVEL_SERVICE_DATABASE_FILES_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

namespace Orvel::Service {

/// The files of an open WAL database, by which it is told whether their names still lead to them.
/// Whoever has a file open can go on writing to it after somebody has removed or moved it.
///
/// Any thread. Asks the file system and reads nothing.
class DatabaseFiles {
  public:
    /// @param database the main file. A connection to it must have been used already, so that its
    ///     log is there, and must stay open, so that the log stays.
    explicit DatabaseFiles(std::filesystem::path database);

    /// Whether each is there, and is the one that it was.
    bool areInPlace() const;

    const std::filesystem::path& database() const { return paths_.front(); }

  private:
    /// What the file system knows a file by.
    using Identity = std::optional<std::pair<std::uint64_t, std::uint64_t>>;

    static Identity identityOf(const std::filesystem::path& file);

    std::array<std::filesystem::path, 2> paths_;
    std::array<Identity, 2> identities_;
};

}  // namespace Orvel::Service

#endif
