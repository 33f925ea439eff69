#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

#include "service/data_folder.h"
#include "service/process.h"

namespace Orvel::Service {

namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// An open file, for its owner only; SQLite gives the files that it puts beside it the same mode.
class PrivateFile {
  public:
    explicit PrivateFile(const std::filesystem::path& file)
        : descriptor_(
              ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {
        if (descriptor_ < 0) {
            fail("cannot open " + file.string());
        }
    }
    PrivateFile(const PrivateFile&) = delete;
    PrivateFile& operator=(const PrivateFile&) = delete;
    ~PrivateFile() { ::close(descriptor_); }

    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

void makeFolder(const std::filesystem::path& folder) {
    if (folder.has_parent_path()) {
        std::filesystem::create_directories(folder.parent_path());
    }
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        fail("cannot make the data folder " + folder.string());
    }
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
            fail("cannot lock the data folder " + folder.string());
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
