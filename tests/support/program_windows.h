#ifndef ORVEL_SUPPORT_PROGRAM_WINDOWS_H
#define ORVEL_SUPPORT_PROGRAM_WINDOWS_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Orvel::Support {

/// A program to be run to its end.
struct Program {
    enum class Stream { Kept, Closed, WithoutReader };

    std::filesystem::path path;
    std::vector<std::wstring> arguments;
    /// What comes through a pipe on standard input, a few kilobytes at most; closed without it.
    std::optional<std::string> input = std::string();
    /// `Kept` ends in the outcome; nobody reads from the pipe `WithoutReader`.
    Stream out = Stream::Kept;
    Stream error = Stream::Kept;
};

struct ProgramOutcome {
    int status = -1;
    std::string out;
    std::string error;
};

/// @throws std::system_error when it cannot be started; std::runtime_error when it does not end
///     within a minute, and it is ended then.
ProgramOutcome run(const Program& program);

}  // namespace Orvel::Support

#endif
