#include "cli/console.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <ostream>
#include <sstream>
#include <streambuf>

#include "cli/failure.h"

namespace Orvel::Tool {
namespace {

TEST(PrintableTest, TextOfPeopleIsLeftAlone) {
    EXPECT_EQ(printable("plain \"text\" \\ with é, 漢字 and 📝"),
              "plain \"text\" \\ with é, 漢字 and 📝");
    EXPECT_EQ(printable(""), "");
}

TEST(PrintableTest, ControlCharactersAreEscaped) {
    EXPECT_EQ(printable(std::string_view("a\0b\n\t\x1b[31m\x7f", 11)),
              "a\\x00b\\x0a\\x09\\x1b[31m\\x7f");
}

TEST(PrintableTest, ControlCharactersAboveAsciiAreEscaped) {
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m\xC2\xA0"),
              "\\u009b31m\xC2\xA0");
}

TEST(PrintableTest, LineSeparatorsAndMarksOfWritingDirectionAreEscaped) {
    EXPECT_EQ(
        printable("a\u2027\u2028\u2029\u202Ab\u202E\u202F\u200D\u200E\u2065\u2066\u2069\u061C"),
        "a\u2027\\u2028\\u2029\\u202ab\\u202e\u202F\u200D\\u200e\u2065\\u2066\\u2069\\u061c");
    EXPECT_EQ(printable("\U0001F4DD\u2028"), "\U0001F4DD\\u2028");
}

TEST(PrintableTest, BytesThatAreNoUtf8AreEscaped) {
    EXPECT_EQ(printable("caf\xE9!"), "caf\\xe9!");
    EXPECT_EQ(printable("\xC2"), "\\xc2");
}

/// What it is given cannot be stored.
class FullDisk : public std::streambuf {
  protected:
    int_type overflow(int_type byte) override { return traits_type::not_eof(byte); }
    int sync() override {
        errno = ENOSPC;
        return -1;
    }
};

TEST(FlushOutputTest, SaysWhyNothingCanBeWritten) {
    std::istringstream in;
    FullDisk disk;
    std::ostream full(&disk);
    std::ostringstream err;
    Console console{in, full, err, false, false, {}};
    full << "something";
    try {
        flushOutput(console);
        FAIL() << "a full disk was not noticed";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), ExitStatus::Failed);
        EXPECT_STREQ(failure.what(), "cannot write to standard output: No space left on device");
    }
}

TEST(FlushOutputTest, NoticesAnEarlierFailure) {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    out.setstate(std::ios::badbit);
    Console console{in, out, err, false, false, {}};
    EXPECT_THROW(flushOutput(console), Failure);
}

}  // namespace
}  // namespace Orvel::Tool
