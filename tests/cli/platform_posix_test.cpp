#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "cli/platform.h"

namespace Orvel::Tool {
namespace {

/// Sets an environment variable for the length of a test.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* const before = std::getenv(name)) {
            before_ = before;
        }
        setenv(name, value, 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() {
        if (before_) {
            setenv(name_, before_->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }

  private:
    const char* name_;
    std::optional<std::string> before_;
};

/// Puts a file in the place of standard error for the length of a test.
class StandardError {
  public:
    explicit StandardError(int descriptor) : saved_(dup(STDERR_FILENO)) {
        dup2(descriptor, STDERR_FILENO);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;
    ~StandardError() {
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }

  private:
    int saved_;
};

bool isTerminalOn(int descriptor) {
    const StandardError redirected(descriptor);
    return standardErrorIsTerminal();
}

TEST(PlatformTest, ATerminalIsToldFromAFile) {
    const Variable term("TERM", "xterm");
    const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(file, 0);
    ASSERT_GE(terminal, 0);
    EXPECT_FALSE(isTerminalOn(file));
    EXPECT_TRUE(isTerminalOn(terminal));
    close(file);
    close(terminal);
}

TEST(PlatformTest, ATerminalThatCannotRedrawIsNone) {
    const Variable term("TERM", "dumb");
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    EXPECT_FALSE(isTerminalOn(terminal));
    close(terminal);
}

TEST(PlatformTest, ColoursAreWelcomeUnlessTheUserSaysNo) {
    {
        const Variable empty("NO_COLOR", "");
        EXPECT_TRUE(colourIsWelcome());
    }
    const Variable set("NO_COLOR", "1");
    EXPECT_FALSE(colourIsWelcome());
}

}  // namespace
}  // namespace Orvel::Tool
