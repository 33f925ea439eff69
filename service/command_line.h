#ifndef ORVEL_SERVICE_COMMAND_LINE_H
#define ORVEL_SERVICE_COMMAND_LINE_H

#include <filesystem>
#include <optional>
#include <variant>

#include "service/store_reader.h"

namespace Orvel::Service {

enum ExitStatus { kSuccess = 0, kFailure = 1, kWrongUsage = 2 };

enum class Task { kServe, kEvents, kClasses, kConsent, kStatus };

/// What the command line says. What a command has no option for is as it is made.
struct CommandLine {
    Task task = Task::kServe;
    std::optional<std::filesystem::path> data = std::nullopt;
    std::optional<std::filesystem::path> settings = std::nullopt;
    EventFilter filter = {};
    bool json = false;
    bool count = false;
    bool history = false;
};

/// Reads the command line. What has no more to it than words is done here: help and the version go
/// to standard output, what is wrong with the command line goes to standard error.
/// @return the exit status when nothing is left to do.
std::variant<CommandLine, ExitStatus> readCommandLine(int argc, const char* const* argv);

}  // namespace Orvel::Service

#endif
