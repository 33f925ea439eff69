#ifndef ORVEL_CLI_TOOL_H
#define ORVEL_CLI_TOOL_H

#include <functional>
#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/failure.h"

/// @file
/// The whole tool as a function.

namespace Orvel::Tool {

/// A command of the tool, with its options read.
using Action = std::function<ExitStatus(Console&)>;

/// Reads the command line and runs its command. Every failure ends as a message on standard error
/// and an exit status; nothing is thrown but what the streams themselves throw.
/// @param arguments the program's name and what follows it.
ExitStatus runTool(const std::vector<std::string>& arguments, Console& console);

}  // namespace Orvel::Tool

#endif
