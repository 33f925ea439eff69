#ifndef ORVEL_CLI_PLATFORM_H
#define ORVEL_CLI_PLATFORM_H

/// @file
/// What the tool asks of the operating system.

namespace Orvel::Tool {

/// Makes the standard streams safe to use: a reader that goes away becomes a failed write instead
/// of the end of the process, and a stream that was closed by the caller cannot become the number
/// of a file or connection opened later. To be called first.
void prepareStandardStreams();

/// Whether standard error is a terminal that can redraw a line.
[[nodiscard]] bool standardErrorIsTerminal();

/// Whether the user's settings allow colours (the NO_COLOR convention).
[[nodiscard]] bool colourIsWelcome();

}  // namespace Orvel::Tool

#endif
