#ifndef ORVEL_SUPPORT_TEMPORARY_FOLDER_H
#define ORVEL_SUPPORT_TEMPORARY_FOLDER_H

#include <filesystem>

namespace Orvel::Support {

/// A folder of its own for one test, for its owner only; removed with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace Orvel::Support

#endif
