#ifndef ORVEL_CLI_CHECK_H
#define ORVEL_CLI_CHECK_H

#include <string>

#include "cli/console.h"
#include "cli/failure.h"

/// @file
/// The command `check`: judges the events of a file as the library does, without a service.

namespace Orvel::Tool {

/// What the command line says.
struct CheckOptions {
    std::string dataClassFile;
    /// The member of an event that holds its time; empty when events need none.
    std::string timeMember;
    /// Whether the summary is for programs.
    bool json = false;
    /// The file of events; "-" is standard input.
    std::string events = "-";
};

/// Offers every event to a session that sends nothing. Refusals are told on standard error as they
/// come, the summary at the end on standard output.
/// @return how the run ended; a run that broke off is told of in the output already.
/// @throws Failure when standard output cannot be written.
ExitStatus check(const CheckOptions& options, Console& console);

}  // namespace Orvel::Tool

#endif
