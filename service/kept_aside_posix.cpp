#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string>

#include "service/data_folder.h"
#include "service/private_file.h"

namespace Orvel::Service {

namespace {

/// What SQLite may have put beside a database and needs to make sense of it.
constexpr std::array kCompanions = {"-wal", "-journal"};
/// What else SQLite may have put there; it is made anew from the log.
constexpr const char* kLogIndex = "-shm";

std::filesystem::path withEnding(const std::filesystem::path& file, const char* ending) {
    return file.string() + ending;
}

/// Gives a file that is there a second name. @return false when that name is taken.
bool addName(const std::filesystem::path& file, const std::filesystem::path& name) {
    if (::link(file.c_str(), name.c_str()) == 0) {
        return true;
    }
    if (errno == EEXIST) {
        return false;
    }
    throwSystemError("cannot keep " + file.string() + " as " + name.string());
}

/// Gives a file a second name that no file has. @return the name.
std::filesystem::path addFreeName(const std::filesystem::path& file, const std::string& begin) {
    for (int number = 1;; ++number) {
        std::filesystem::path name = file.string() + begin + std::to_string(number);
        if (addName(file, name)) {
            return name;
        }
    }
}

void removeFile(const std::filesystem::path& file) {
    if (::unlink(file.c_str()) != 0 && errno != ENOENT) {
        throwSystemError("cannot remove " + file.string());
    }
}

/// Returns when the names in a folder are durable.
void syncFolder(const std::filesystem::path& folder) {
    const OpenFile open(folder, O_RDONLY | O_DIRECTORY);
    if (::fsync(open.descriptor()) != 0) {
        throwSystemError("cannot write the folder " + folder.string());
    }
}

}  // namespace

// The new names are durable before an old one goes. The log goes after the database: SQLite throws
// it away when it finds it beside an empty one, but would read it into the same one.
std::filesystem::path DataFolder::keepDatabaseAside() {
    std::filesystem::path aside = addFreeName(database_, ".damaged-");
    for (const char* ending : kCompanions) {
        const auto companion = withEnding(database_, ending);
        if (exists(companion) && !addName(companion, withEnding(aside, ending))) {
            throw std::runtime_error("another file has the name " +
                                     withEnding(aside, ending).string());
        }
    }
    syncFolder(database_.parent_path());
    removeFile(database_);
    for (const char* ending : kCompanions) {
        removeFile(withEnding(database_, ending));
    }
    removeFile(withEnding(database_, kLogIndex));
    const PrivateFile empty(database_);
    syncFolder(database_.parent_path());
    return aside;
}

}  // namespace Orvel::Service
