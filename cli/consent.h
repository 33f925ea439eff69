#ifndef ORVEL_CLI_CONSENT_H
#define ORVEL_CLI_CONSENT_H

#include <optional>

#include "cli/console.h"
#include "cli/failure.h"
#include "cli/tool_session.h"
#include "orvel/analytics/processing_permissions.h"

/// @file
/// The commands `consent get`, `consent set` and `documents`.

namespace Orvel::Tool {

/// What the command line says.
struct ConsentOptions {
    using Answer = std::optional<ProcessingPermissions::ProcessingPermissionValue>;

    SessionOptions session;
    /// Whether the output is for programs.
    bool json = false;
    /// The new answers of `consent set`. A purpose without one keeps the answer that it has.
    Answer marketing;
    Answer support;
    Answer productEnhancement;
};

/// Each of the commands asks the service and writes what it has to standard output, or why it has
/// nothing to standard error; with `json`, one object with both to standard output.
/// @return how the command ended.
/// @throws Failure when standard output cannot be written.

/// Shows the consent record.
ExitStatus getConsent(const ConsentOptions& options, Console& console);

/// Changes the answers for the purposes named and shows the record that the service has then. The
/// service takes all answers at once, so the others are read first; a change that another program
/// makes in between is lost.
ExitStatus setConsent(const ConsentOptions& options, Console& console);

/// Shows the addresses of the privacy documents.
ExitStatus showDocuments(const ConsentOptions& options, Console& console);

}  // namespace Orvel::Tool

#endif
