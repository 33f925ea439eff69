#ifndef ORVEL_CLI_INPUT_FILE_H
#define ORVEL_CLI_INPUT_FILE_H

#include <cstdint>
#include <streambuf>
#include <string>
#include <vector>

/// @file
/// The bytes of a file. The standard library's own file streams take a failed read for the file's
/// end on some platforms, and half a file must not pass for a whole one.

namespace Orvel::Tool {

/// A file that is read from its beginning to its end. What a pipe holds is handed on as it comes.
class InputFile final : public std::streambuf {
  public:
    /// Standard input.
    InputFile();
    /// @param name the file's name as the command line has it.
    /// @throws Failure with `ExitStatus::Usage` and the reason in words when it cannot be opened.
    explicit InputFile(const std::string& name);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() override;

    /// The file's size in bytes; 0 when it has none, as a pipe.
    [[nodiscard]] std::uint64_t size() const { return size_; }

  protected:
    /// @throws std::system_error when reading fails; every operation that reads does so then.
    int_type underflow() override;

  private:
    int descriptor_;
    bool mine_;
    std::uint64_t size_ = 0;
    std::vector<char> buffer_;
};

}  // namespace Orvel::Tool

#endif
