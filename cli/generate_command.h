#ifndef ORVEL_CLI_GENERATE_COMMAND_H
#define ORVEL_CLI_GENERATE_COMMAND_H

#include "cli/tool.h"

namespace CLI {
class App;
}

namespace Orvel::Tool {

/// Adds the command `generate` and its options to the command line.
void addGenerateCommand(CLI::App& app, Action& chosen);

}  // namespace Orvel::Tool

#endif
