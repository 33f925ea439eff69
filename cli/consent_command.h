#ifndef ORVEL_CLI_CONSENT_COMMAND_H
#define ORVEL_CLI_CONSENT_COMMAND_H

#include "cli/tool.h"

namespace CLI {
class App;
}

namespace Orvel::Tool {

/// Adds the commands `consent get` and `consent set` and their options to the command line.
void addConsentCommand(CLI::App& app, Action& chosen);

/// Adds the command `documents` and its options to the command line.
void addDocumentsCommand(CLI::App& app, Action& chosen);

}  // namespace Orvel::Tool

#endif
