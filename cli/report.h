#ifndef ORVEL_CLI_REPORT_H
#define ORVEL_CLI_REPORT_H

#include <cstddef>
#include <string>

#include "cli/console.h"
#include "cli/failure.h"
#include "cli/tool_session.h"

/// @file
/// The command `report`: sends the events of a file to the service.

namespace Orvel::Tool {

/// What the command line says.
struct ReportOptions {
    SessionOptions session;
    std::string dataClassFile;
    /// The member of an event that holds its time; empty for the time of collection.
    std::string timeMember;
    /// Events per batch.
    std::size_t batch = 1000;
    /// A batch whose lines reach this size is sent before it is full, so that memory stays bounded.
    std::size_t batchBytes = std::size_t{32} << 20;
    /// Whether the summary is for programs.
    bool json = false;
    /// The file of events; "-" is standard input.
    std::string events = "-";
};

/// Registers the data class, then collects and sends every event. Refusals are told on standard
/// error as they come, the summary at the end on standard output.
/// @return how the run ended; a run that broke off is told of in the output already.
/// @throws Failure when standard output cannot be written.
ExitStatus report(const ReportOptions& options, Console& console);

}  // namespace Orvel::Tool

#endif
