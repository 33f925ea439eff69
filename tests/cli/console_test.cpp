#include "cli/console.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

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

TEST(FlushOutputTest, SaysWhyNothingCanBeWritten) {
    std::istringstream in;
    std::ofstream full("/dev/full");
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
