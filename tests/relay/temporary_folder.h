#ifndef ORVEL_RELAY_TEMPORARY_FOLDER_H
#define ORVEL_RELAY_TEMPORARY_FOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace Orvel::Relay::Testing {

/// A folder of the test's own with a short name, as a socket's path has little room.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "orvel-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary folder");
        }
        path_ = name;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

}  // namespace Orvel::Relay::Testing

#endif
