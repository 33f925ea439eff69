#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "service/data_folder.h"
#include "service/private_file.h"
#include "service/process.h"

namespace Orvel::Service {

namespace {

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

/// @throws std::runtime_error when others than this process's user may look into the folder.
void refuseOthers(const std::filesystem::path& folder) {
    struct stat found {};
    if (::stat(folder.c_str(), &found) != 0) {
        throwSystemError("cannot look at the data folder " + folder.string());
    }
    if (!S_ISDIR(found.st_mode)) {
        throw std::runtime_error(folder.string() + " is no folder");
    }
    if (found.st_uid != ::geteuid()) {
        throw std::runtime_error("the data folder " + folder.string() +
                                 " belongs to another user than the one who runs the service");
    }
    if ((found.st_mode & kOthers) != 0) {
        throw std::runtime_error(
            "the data folder is open to other users; close it with: chmod 700 " + folder.string());
    }
}

void makeFolder(const std::filesystem::path& folder) {
    if (folder.has_parent_path()) {
        std::filesystem::create_directories(folder.parent_path());
    }
    if (::mkdir(folder.c_str(), S_IRWXU) == 0) {
        return;
    }
    if (errno != EEXIST) {
        throwSystemError("cannot make the data folder " + folder.string());
    }
    refuseOthers(folder);
}

}  // namespace

std::filesystem::path defaultDataFolder() {
    if (runsAsRoot()) {
        return "/var/lib/orvel-analytics";
    }
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') {
        return std::filesystem::path(state) / "orvel-analytics";
    }
    const char* home = std::getenv("HOME");
    if (home == nullptr || *home != '/') {
        throw std::runtime_error("no data folder is known: HOME is not set; name one with --data");
    }
    return std::filesystem::path(home) / ".local/state/orvel-analytics";
}

class DataFolder::Lock {
  public:
    explicit Lock(const std::filesystem::path& folder) : file_(folder / "lock") {
        if (::flock(file_.descriptor(), LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) {
                throw std::runtime_error("another service uses the data folder " + folder.string());
            }
            throwSystemError("cannot lock the data folder " + folder.string());
        }
    }

  private:
    PrivateFile file_;
};

DataFolder::DataFolder(const std::filesystem::path& folder) : database_(databaseFile(folder)) {
    // A trailing slash would stand for an empty name within the folder.
    makeFolder(folder.has_filename() ? folder : folder.parent_path());
    lock_ = std::make_unique<Lock>(folder);
    const PrivateFile database(database_);
}

DataFolder::~DataFolder() = default;

}  // namespace Orvel::Service
