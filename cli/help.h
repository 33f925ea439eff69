#ifndef ORVEL_CLI_HELP_H
#define ORVEL_CLI_HELP_H

#include <string>

namespace CLI {
class App;
}

namespace Orvel::Tool {

/// Gives a command the text that its own `--help` begins with. In the list of its parent's commands
/// stands the command's description, which is one line.
void explain(CLI::App& command, std::string text);

}  // namespace Orvel::Tool

#endif
