#ifndef ORVEL_LIBRARY_HOST_STATE_H
#define ORVEL_LIBRARY_HOST_STATE_H

#include <map>
#include <string>
#include <vector>

/// @file
/// What a process has that a library in it should leave alone.

namespace Orvel::HostTests {

/// Each thing by its name, such as "descriptor 3", with all that can be told of it: how every
/// signal is handled and which are blocked, locales, descriptors, environment, threads, working
/// folder, and mask of new files.
using HostState = std::map<std::string, std::string>;

HostState hostState();

/// What is not the same in both.
std::vector<std::string> differences(const HostState& before, const HostState& after);

/// What this process writes to standard output and error goes nowhere else in its lifetime.
class CapturedOutput {
  public:
    CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput();

    /// Ends the capture. @return what was written.
    std::string finish();

  private:
    int file_;
    int output_;
    int error_;
};

}  // namespace Orvel::HostTests

#endif
