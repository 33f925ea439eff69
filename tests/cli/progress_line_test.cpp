#include "cli/progress_line.h"

#include <gmock/gmock.h>

#include <sstream>

namespace Orvel::Tool {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ProgressLineTest : public testing::Test {
  protected:
    std::string drawn() {
        const std::string text = err.str();
        err.str("");
        return text;
    }

    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    Console console{in, out, err, true, false, {}};
};

TEST_F(ProgressLineTest, ShowsTheShareThatWasRead) {
    ProgressLine progress(console, 200);
    progress.show(100, 7);
    EXPECT_EQ(drawn(), "\r[###############...............]  50%  7 lines");
    progress.show(200, 9);
    EXPECT_EQ(drawn(), "\r[##############################] 100%  9 lines");
}

TEST_F(ProgressLineTest, IsRedrawnOnlyWhenThePictureChanges) {
    ProgressLine progress(console, 1000);
    progress.show(10, 1);
    drawn();
    progress.show(11, 2);
    EXPECT_EQ(drawn(), "");
    progress.show(20, 3);
    EXPECT_THAT(drawn(), HasSubstr("2%"));
}

TEST_F(ProgressLineTest, CountsLinesWhenTheSizeIsNotKnown) {
    ProgressLine progress(console, 0);
    progress.show(10, 1);
    EXPECT_EQ(drawn(), "\r1 lines");
    progress.show(20, 999);
    EXPECT_EQ(drawn(), "");
    progress.show(30, 1000);
    EXPECT_EQ(drawn(), "\r1000 lines");
}

TEST_F(ProgressLineTest, AFileThatGrewMeanwhileNeverShowsMoreThanAll) {
    ProgressLine progress(console, 10);
    progress.show(1000, 1);
    EXPECT_THAT(drawn(), HasSubstr("100%"));
}

TEST_F(ProgressLineTest, IsTakenAwayForAMessageAndAtTheEnd) {
    {
        ProgressLine progress(console, 10);
        progress.show(5, 1);
        progress.clear();
        EXPECT_THAT(drawn(), EndsWith("\r\x1b[K"));
        progress.clear();
        EXPECT_EQ(drawn(), "");
        progress.show(5, 1);
        EXPECT_THAT(drawn(), HasSubstr("50%"));
    }
    EXPECT_EQ(drawn(), "\r\x1b[K");
}

TEST_F(ProgressLineTest, UsesColourOnlyWhereItIsWelcome) {
    {
        ProgressLine plain(console, 10);
        plain.show(5, 1);
    }
    EXPECT_THAT(drawn(), Not(HasSubstr("\x1b[32m")));
    console.colour = true;
    ProgressLine coloured(console, 10);
    coloured.show(5, 1);
    EXPECT_THAT(drawn(), HasSubstr("\x1b[32m###############\x1b[0m..............."));
}

TEST_F(ProgressLineTest, NothingIsDrawnWithoutATerminal) {
    console.terminal = false;
    {
        ProgressLine progress(console, 10);
        progress.show(5, 1);
    }
    EXPECT_EQ(drawn(), "");
}

}  // namespace
}  // namespace Orvel::Tool
