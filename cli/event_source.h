#ifndef ORVEL_CLI_EVENT_SOURCE_H
#define ORVEL_CLI_EVENT_SOURCE_H

#include <cstdint>
#include <istream>
#include <optional>
#include <streambuf>
#include <string>

#include "cli/console.h"
#include "cli/input_file.h"

namespace Orvel::Tool {

/// The events' file, or standard input.
class EventSource {
  public:
    /// @param name the file's name; "-" is standard input.
    /// @throws Failure with `ExitStatus::Usage` when it cannot be opened.
    EventSource(const std::string& name, Console& console) : console_(console) {
        if (name != "-") {
            file_.emplace(name);
        }
    }

    std::streambuf& bytes() { return file_ ? *file_ : *console_.in.rdbuf(); }
    /// 0 when it is not known, and then no percentage is shown.
    [[nodiscard]] std::uint64_t size() const { return file_ ? file_->size() : 0; }

  private:
    Console& console_;
    std::optional<InputFile> file_;
};

}  // namespace Orvel::Tool

#endif
