#include <sys/stat.h>

#include "service/database_files.h"

namespace Orvel::Service {

DatabaseFiles::DatabaseFiles(std::filesystem::path database)
    : paths_{std::move(database), {}}, identities_{} {
    paths_[1] = paths_[0].string() + "-wal";
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        identities_[i] = identityOf(paths_[i]);
    }
}

bool DatabaseFiles::areInPlace() const {
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        if (!identities_[i] || identityOf(paths_[i]) != identities_[i]) {
            return false;
        }
    }
    return true;
}

DatabaseFiles::Identity DatabaseFiles::identityOf(const std::filesystem::path& file) {
    struct stat found {};
    if (::stat(file.c_str(), &found) != 0) {
        return std::nullopt;
    }
    return std::pair<std::uint64_t, std::uint64_t>{found.st_dev, found.st_ino};
}

}  // namespace Orvel::Service
