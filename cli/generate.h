#ifndef ORVEL_CLI_GENERATE_H
#define ORVEL_CLI_GENERATE_H

#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/failure.h"

/// @file
/// The command `generate`: writes C++ classes for data classes and their events.

namespace Orvel::Tool {

/// What the command line says.
struct GenerateOptions {
    std::vector<std::string> dataClassFiles;
    /// The folder that the files are written to.
    std::string folder;
    /// The namespace of the classes; empty for none.
    std::string nameSpace;
};

/// Reads all data classes, then writes a header and a source for each, named after its file, and
/// says on standard output what was written and what was as it should be already.
/// @throws Failure with `ExitStatus::Usage` when something cannot be read, or no C++ can be made of
///     it, and nothing has been written then; with `ExitStatus::Failed` when something cannot be
///     written.
ExitStatus generate(const GenerateOptions& options, Console& console);

}  // namespace Orvel::Tool

#endif
