#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
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

constexpr mode_t kOwnersFile = S_IRUSR | S_IWUSR;
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

class OpenFile {
  public:
    OpenFile(const std::filesystem::path& file, int flags)
        : descriptor_(::open(file.c_str(), flags | O_CLOEXEC, kOwnersFile)) {
        if (descriptor_ < 0) {
            fail("cannot open " + file.string());
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { ::close(descriptor_); }

    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// A file for its owner only; SQLite gives the files that it puts beside it the same mode.
class PrivateFile : public OpenFile {
  public:
    explicit PrivateFile(const std::filesystem::path& file)
        : OpenFile(file, O_RDWR | O_CREAT | O_NOFOLLOW) {
        struct stat found {};
        if (::fstat(descriptor(), &found) != 0 ||
            ((found.st_mode & kOthers) != 0 && ::fchmod(descriptor(), kOwnersFile) != 0)) {
            fail("cannot close " + file.string() + " to other users");
        }
    }
};

/// @throws std::runtime_error when others than this process's user may look into the folder.
void refuseOthers(const std::filesystem::path& folder) {
    struct stat found {};
    if (::stat(folder.c_str(), &found) != 0) {
        fail("cannot look at the data folder " + folder.string());
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
        fail("cannot make the data folder " + folder.string());
    }
    refuseOthers(folder);
}

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
    fail("cannot keep " + file.string() + " as " + name.string());
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
        fail("cannot remove " + file.string());
    }
}

/// Returns when the names in a folder are durable.
void syncFolder(const std::filesystem::path& folder) {
    const OpenFile open(folder, O_RDONLY | O_DIRECTORY);
    if (::fsync(open.descriptor()) != 0) {
        fail("cannot write the folder " + folder.string());
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
