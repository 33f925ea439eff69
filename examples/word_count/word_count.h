#ifndef WORD_COUNT_WORD_COUNT_H
#define WORD_COUNT_WORD_COUNT_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace WordCount {

/// How many words a text has: what blanks and line ends part.
std::int32_t countWords(std::istream& text);

/// Counts the words of files, line by line on `out`, and reports the use. Whatever becomes of the
/// report, the words are counted.
/// @param errors is told of what was not done.
/// @return the program's exit status: 1 when a file could not be read.
int run(const std::vector<std::string>& files, std::ostream& out, std::ostream& errors);

}  // namespace WordCount

#endif
