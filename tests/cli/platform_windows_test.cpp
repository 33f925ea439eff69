#include <gmock/gmock.h>
#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>

#include "cli/platform.h"
#include "cli/tool_fixture.h"

namespace Orvel::Tool {
namespace {

using testing::HasSubstr;

/// Sets an environment variable for the length of a test.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* const before = std::getenv(name)) {
            before_ = before;
        }
        ::_putenv_s(name, value);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { ::_putenv_s(name_, before_ ? before_->c_str() : ""); }

  private:
    const char* name_;
    std::optional<std::string> before_;
};

/// A pipe of the system with a name and one reader.
class NamedPipe {
  public:
    NamedPipe()
        : name_(LR"(\\.\pipe\orvel-tool-test-)" + std::to_wstring(::GetCurrentProcessId())),
          end_(::CreateNamedPipeW(name_.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE,
                                  PIPE_UNLIMITED_INSTANCES, 4096, 4096, 0, nullptr)) {}
    NamedPipe(const NamedPipe&) = delete;
    NamedPipe& operator=(const NamedPipe&) = delete;
    ~NamedPipe() { ::CloseHandle(end_); }

    const std::wstring& name() const { return name_; }

    void write(std::string_view text) {
        DWORD written = 0;
        ::WriteFile(end_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }

    /// Makes every further read fail; what has not been read is lost.
    void breakOff() { ::DisconnectNamedPipe(end_); }

  private:
    std::wstring name_;
    HANDLE end_;
};

TEST(PlatformTest, ColoursAreWelcomeUnlessTheUserSaysNo) {
    {
        const Variable unset("NO_COLOR", "");
        EXPECT_TRUE(colourIsWelcome());
    }
    const Variable set("NO_COLOR", "1");
    EXPECT_FALSE(colourIsWelcome());
}

TEST(PlatformTest, AFileIsNoTerminal) {
    const HANDLE before = ::GetStdHandle(STD_ERROR_HANDLE);
    const HANDLE file = ::CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    ::SetStdHandle(STD_ERROR_HANDLE, file);
    EXPECT_FALSE(standardErrorIsTerminal());
    ::SetStdHandle(STD_ERROR_HANDLE, before);
    ::CloseHandle(file);
}

TEST(PlatformTest, AnArgumentNamesAFileInUtf8) {
    EXPECT_EQ(toPath("cl\xC3\xA9 \xE6\xBC\xA2").native(), L"cl\u00E9 \u6F22");
    EXPECT_THROW(static_cast<void>(toPath("caf\xE9")), std::invalid_argument);
}

TEST(PlatformTest, BytesAreReadAsTheyAre) {
    const Support::TemporaryFolder folder;
    const auto path = folder.path() / L"\u6F22";
    const std::string content("a\r\n\x1A\0\xFF", 6);
    std::ofstream(path, std::ios::binary) << content;
    const int file = openForReading(path);
    std::string bytes(100, '\0');
    bytes.resize(readSome(file, bytes.data(), bytes.size()));
    EXPECT_EQ(bytes, content);
    EXPECT_EQ(readSome(file, bytes.data(), bytes.size()), 0U);
    closeFile(file);
}

TEST(PlatformTest, AReadThatFailsIsToldFromTheEnd) {
    NamedPipe pipe;
    const int file = openForReading(pipe.name());
    pipe.write("half");
    std::string bytes(4, '\0');
    EXPECT_EQ(readSome(file, bytes.data(), bytes.size()), 4U);
    pipe.breakOff();
    EXPECT_THROW(static_cast<void>(readSome(file, bytes.data(), bytes.size())), std::system_error);
    closeFile(file);
}

using InputTest = ToolTest;

TEST_F(InputTest, ThatFailsBreaksOff) {
    NamedPipe pipe;
    script.onExecute = [&pipe](const Analytics::Testing::Executed&) { pipe.breakOff(); };
    const ToolRun result = runReport({argumentFor(pipe.name())});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("reading broke off"));
}

}  // namespace
}  // namespace Orvel::Tool
