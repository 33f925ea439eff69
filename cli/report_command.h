#ifndef ORVEL_CLI_REPORT_COMMAND_H
#define ORVEL_CLI_REPORT_COMMAND_H

#include "cli/tool.h"

namespace CLI {
class App;
}

namespace Orvel::Tool {

/// Adds the command `report` and its options to the command line.
void addReportCommand(CLI::App& app, Action& chosen);

}  // namespace Orvel::Tool

#endif
