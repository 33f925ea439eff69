#ifndef ORVEL_CLI_PROGRESS_LINE_H
#define ORVEL_CLI_PROGRESS_LINE_H

#include <cstdint>
#include <string>

#include "cli/console.h"

/// @file
/// The progress of a long run, drawn on one line of the terminal.

namespace Orvel::Tool {

/// Draws on standard error, and only when that is a terminal; otherwise every operation is empty.
class ProgressLine {
  public:
    /// @param total the number of bytes that will be read; 0 when it is not known.
    ProgressLine(Console& console, std::uint64_t total);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    /// Clears the line.
    ~ProgressLine();

    /// Shows that so many bytes and lines have been read; redraws only when that changes the
    /// picture.
    void show(std::uint64_t bytes, std::uint64_t lines);

    /// Takes the line away, so that a message can be written in its place.
    void clear();

  private:
    [[nodiscard]] std::string picture(std::uint64_t percent, std::uint64_t lines) const;

    Console& console_;
    std::uint64_t total_;
    std::uint64_t drawnStep_ = ~std::uint64_t{0};
    bool visible_ = false;
};

}  // namespace Orvel::Tool

#endif
