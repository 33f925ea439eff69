#ifndef ORVEL_SERVICE_DATA_FOLDER_H
#define ORVEL_SERVICE_DATA_FOLDER_H

#include <filesystem>
#include <memory>

namespace Orvel::Service {

/// Where data is kept when nothing is said: /var/lib/orvel-analytics for root, for any other user
/// orvel-analytics in $XDG_STATE_HOME, or in ~/.local/state when that is not set.
/// @throws std::runtime_error when neither is known.
std::filesystem::path defaultDataFolder();

/// A data folder that this process alone writes to. The claim ends with the object, or with the
/// process, however it ends.
class DataFolder {
  public:
    /// Makes the folder when it is missing, for its owner only, and claims it.
    /// @throws std::system_error when it cannot be made; std::runtime_error when another service
    ///     has claimed it, or when others than this process's user may look into it.
    explicit DataFolder(const std::filesystem::path& folder);
    DataFolder(const DataFolder&) = delete;
    DataFolder& operator=(const DataFolder&) = delete;
    ~DataFolder();

    /// The database within it, for its owner only; made, and empty, when it was missing.
    const std::filesystem::path& database() const { return database_; }

    /// Gives the database, with its log, a name that no file has, and makes an empty one. Nobody
    /// may have it open. When it fails, or when the machine stops in the middle, the files are
    /// there under their old names or under new ones.
    /// @return the new name.
    /// @throws std::system_error
    std::filesystem::path keepDatabaseAside();

  private:
    class Lock;

    std::unique_ptr<Lock> lock_;
    std::filesystem::path database_;
};

/// Where the database is within a data folder.
std::filesystem::path databaseFile(const std::filesystem::path& folder);

}  // namespace Orvel::Service

#endif
