#ifndef ORVEL_CLI_PLATFORM_H
#define ORVEL_CLI_PLATFORM_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// @file
/// What the tool asks of the operating system.

namespace Orvel::Tool {

/// Makes the standard streams safe to use: they carry bytes, which a terminal shows as UTF-8; a
/// reader that goes away becomes a failed write instead of the end of the process; and a stream
/// that was closed by the caller cannot become the number of a file or connection opened later. To
/// be called first.
void prepareStandardStreams();

/// Whether standard error is a terminal that can redraw a line.
[[nodiscard]] bool standardErrorIsTerminal();

/// Whether the user's settings allow colours (the NO_COLOR convention).
[[nodiscard]] bool colourIsWelcome();

/// The program's name and arguments, in UTF-8 where the system has them as text. What is no text
/// becomes bytes that are no UTF-8, so that it is refused wherever it is used as one.
/// @param argc as `main` has it.
/// @param argv as `main` has it.
[[nodiscard]] std::vector<std::string> commandLine(int argc, char** argv);

/// The file that an argument names.
/// @throws std::invalid_argument, with the reason in words, when no file can have the name.
[[nodiscard]] std::filesystem::path toPath(const std::string& argument);

/// Opens a file for reading bytes; programs that are started do not have it.
/// @return its descriptor.
/// @throws std::system_error when it cannot be opened; a folder is `std::errc::is_a_directory`.
[[nodiscard]] int openForReading(const std::filesystem::path& path);

/// Standard input's descriptor.
[[nodiscard]] int standardInput();

/// Reads what there is to read, and waits when there is nothing yet.
/// @param size the most bytes to read, at least 1.
/// @return the number of bytes read; 0 at the end.
/// @throws std::system_error when reading fails.
[[nodiscard]] std::size_t readSome(int descriptor, char* bytes, std::size_t size);

/// Closes a file that was opened for reading.
void closeFile(int descriptor);

/// The last year, by the calendar of UTC, whose times the library can write on this platform.
[[nodiscard]] int lastReportableYear();

/// What to look at when nobody listens at the service's endpoint, as a question.
[[nodiscard]] std::string_view absentServiceHint();

}  // namespace Orvel::Tool

#endif
