#ifndef ORVEL_CLI_CHECK_COMMAND_H
#define ORVEL_CLI_CHECK_COMMAND_H

#include "cli/tool.h"

namespace CLI {
class App;
}

namespace Orvel::Tool {

/// Adds the command `check` and its options to the command line.
void addCheckCommand(CLI::App& app, Action& chosen);

}  // namespace Orvel::Tool

#endif
