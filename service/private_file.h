#ifndef ORVEL_SERVICE_PRIVATE_FILE_H
#define ORVEL_SERVICE_PRIVATE_FILE_H

#include <filesystem>
#include <string>

namespace Orvel::Service {

/// Throws the error of the system's call that has just failed. @throws std::system_error
[[noreturn]] void throwSystemError(const std::string& what);

/// An open file or folder, which programs that this one starts do not get.
class OpenFile {
  public:
    /// @param flags as of open(2); a file that is made is for its owner only.
    /// @throws std::system_error
    OpenFile(const std::filesystem::path& file, int flags);
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile();

    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

/// A file for its owner only, open for reading and writing; made, and empty, when it was missing.
/// SQLite gives the files that it puts beside it the same mode.
class PrivateFile : public OpenFile {
  public:
    /// @throws std::system_error also when the name is that of a link.
    explicit PrivateFile(const std::filesystem::path& file);
};

}  // namespace Orvel::Service

#endif
