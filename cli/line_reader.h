#ifndef ORVEL_CLI_LINE_READER_H
#define ORVEL_CLI_LINE_READER_H

#include <cstddef>
#include <cstdint>
#include <streambuf>
#include <string>

/// @file
/// Lines of a text of any size, in bounded memory.

namespace Orvel::Tool {

/// One line, without its line end ("\n" or "\r\n").
struct Line {
    /// Counted from 1, blank lines included.
    std::uint64_t number = 0;
    /// The line's bytes; empty when it was too long.
    std::string text;
    /// Whether the line was longer than allowed. It has been skipped to its end.
    bool tooLong = false;
};

/// Reads the lines of a text that have something on them; a last line needs no line end. A line
/// is handed on as soon as it has come, so that a pipe can be followed.
class LineReader {
  public:
    /// @param in borrowed for the reader's life.
    /// @param longest the longest line that is kept, in bytes.
    LineReader(std::streambuf& in, std::size_t longest);

    /// Reads the next line that is not blank.
    /// @return false at the end of the text, or when reading failed.
    bool next(Line& line);

    /// Why reading broke off; empty when it did not.
    [[nodiscard]] const std::string& error() const { return error_; }

    /// The number of bytes read so far.
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }

  private:
    bool readLine(Line& line);
    int readByte();

    std::streambuf& in_;
    std::size_t longest_;
    std::uint64_t number_ = 0;
    std::uint64_t bytes_ = 0;
    std::string error_;
};

}  // namespace Orvel::Tool

#endif
