#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "service/private_file.h"

namespace Orvel::Service {

namespace {

constexpr mode_t kOwnersFile = S_IRUSR | S_IWUSR;
constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

}  // namespace

void throwSystemError(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

OpenFile::OpenFile(const std::filesystem::path& file, int flags)
    : descriptor_(::open(file.c_str(), flags | O_CLOEXEC, kOwnersFile)) {
    if (descriptor_ < 0) {
        throwSystemError("cannot open " + file.string());
    }
}

OpenFile::~OpenFile() { ::close(descriptor_); }

PrivateFile::PrivateFile(const std::filesystem::path& file)
    : OpenFile(file, O_RDWR | O_CREAT | O_NOFOLLOW) {
    struct stat found {};
    if (::fstat(descriptor(), &found) != 0 ||
        ((found.st_mode & kOthers) != 0 && ::fchmod(descriptor(), kOwnersFile) != 0)) {
        throwSystemError("cannot close " + file.string() + " to other users");
    }
}

}  // namespace Orvel::Service
