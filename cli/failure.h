#ifndef ORVEL_CLI_FAILURE_H
#define ORVEL_CLI_FAILURE_H

#include <stdexcept>
#include <string>

/// @file
/// How a command of the tool ends.

namespace Orvel::Tool {

/// The tool's exit statuses; scripts rely on the numbers.
enum class ExitStatus : int {
    /// Everything was accepted.
    Success = 0,
    /// The library or the service refused something.
    Refused = 1,
    /// The command line, or a file named on it, cannot be used.
    Usage = 2,
    /// The service could not be reached.
    Unreachable = 3,
    /// The command broke off: a failed read or write, an unreadable reply, exhausted memory.
    Failed = 4,
};

/// Ends a command early, with its exit status and the reason in words.
class Failure : public std::runtime_error {
  public:
    Failure(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status_(status) {}

    [[nodiscard]] ExitStatus status() const noexcept { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace Orvel::Tool

#endif
