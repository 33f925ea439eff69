#include "cli/line_reader.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <sstream>
#include <streambuf>
#include <system_error>
#include <utility>
#include <vector>

namespace Orvel::Tool {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::vector<std::pair<std::uint64_t, std::string>> readAll(const std::string& text,
                                                           std::size_t longest = 100) {
    std::istringstream in(text);
    LineReader reader(*in.rdbuf(), longest);
    std::vector<std::pair<std::uint64_t, std::string>> lines;
    for (Line line; reader.next(line);) {
        lines.emplace_back(line.number, line.tooLong ? "too long" : line.text);
    }
    EXPECT_EQ(reader.bytes(), text.size());
    EXPECT_EQ(reader.error(), "");
    return lines;
}

TEST(LineReaderTest, CountsLinesFromOneAndSkipsBlankOnes) {
    EXPECT_THAT(readAll("a\n\n \t\nb\n"), ElementsAre(Pair(1, "a"), Pair(4, "b")));
}

TEST(LineReaderTest, TheLastLineNeedsNoEnd) {
    EXPECT_THAT(readAll("a\nb"), ElementsAre(Pair(1, "a"), Pair(2, "b")));
}

TEST(LineReaderTest, AnEmptyTextHasNoLines) { EXPECT_THAT(readAll(""), IsEmpty()); }

TEST(LineReaderTest, ACarriageReturnBelongsToTheLineEnd) {
    EXPECT_THAT(readAll("a\r\n\r\nb\r\rc\r"), ElementsAre(Pair(1, "a"), Pair(3, "b\r\rc")));
}

TEST(LineReaderTest, AByteOrderMarkIsTakenOffTheFirstLineOnly) {
    EXPECT_THAT(readAll("\xEF\xBB\xBF"
                        "a\n\xEF\xBB\xBF"
                        "b"),
                ElementsAre(Pair(1, "a"), Pair(2,
                                               "\xEF\xBB\xBF"
                                               "b")));
}

TEST(LineReaderTest, BytesOfEveryValuePass) {
    const std::string text("\0\x01\xFF\x80", 4);
    EXPECT_THAT(readAll(text), ElementsAre(Pair(1, text)));
}

TEST(LineReaderTest, ALineOfExactlyTheLimitIsKeptAndALongerOneIsSkipped) {
    EXPECT_THAT(readAll("12345\n123456\n1\n", 5),
                ElementsAre(Pair(1, "12345"), Pair(2, "too long"), Pair(3, "1")));
}

TEST(LineReaderTest, ALongLineOfBlanksIsTooLongAndNotBlank) {
    EXPECT_THAT(readAll("      \n", 5), ElementsAre(Pair(1, "too long")));
}

/// A text that breaks off with an error of the system.
class FailingBuffer : public std::streambuf {
  public:
    explicit FailingBuffer(std::string text) : text_(std::move(text)) {
        setg(text_.data(), text_.data(), text_.data() + text_.size());
    }

  protected:
    int_type underflow() override {
        throw std::system_error(EIO, std::generic_category(), "reading");
    }

  private:
    std::string text_;
};

TEST(LineReaderTest, AFailureEndsTheLinesAndIsNotTakenForTheEndOfALine) {
    FailingBuffer buffer("whole\nhal");
    LineReader reader(buffer, 100);
    Line line;
    ASSERT_TRUE(reader.next(line));
    EXPECT_EQ(line.text, "whole");
    EXPECT_FALSE(reader.next(line));
    EXPECT_EQ(reader.error(), std::generic_category().message(EIO));
}

}  // namespace
}  // namespace Orvel::Tool
