/// The tool as a process, with the project's own RPC client and nobody behind the pipes.

#include <gmock/gmock.h>
#include <windows.h>

#include <string>
#include <vector>

#include "support/program_windows.h"

namespace Orvel::Tool {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class UnreachableServiceTest : public testing::Test {
  protected:
    UnreachableServiceTest() {
        // A folder of pipes that is this process's own.
        const std::wstring folder = L"orvel-tool-test-" + std::to_wstring(::GetCurrentProcessId());
        ::SetEnvironmentVariableW(L"ORVEL_RPC_DIRECTORY", folder.c_str());
    }
    ~UnreachableServiceTest() override {
        ::SetEnvironmentVariableW(L"ORVEL_RPC_DIRECTORY", nullptr);
    }
};

TEST_F(UnreachableServiceTest, IsStatus3ForEveryCommand) {
    for (const std::vector<std::wstring>& command :
         {std::vector<std::wstring>{L"consent", L"get"},
          {L"consent", L"set", L"--marketing", L"accepted"},
          {L"documents"}}) {
        const Support::ProgramOutcome result = Support::run({ORVEL_TOOL_PROGRAM, command});
        EXPECT_EQ(result.status, 3);
        EXPECT_THAT(result.error, HasSubstr("nobody listens at its endpoint"));
        EXPECT_THAT(result.error, HasSubstr("(status 1722)"));
        EXPECT_THAT(result.out, IsEmpty());
    }
}

TEST_F(UnreachableServiceTest, IsNotNeededForHelpAndVersion) {
    EXPECT_EQ(Support::run({ORVEL_TOOL_PROGRAM, {L"--help"}}).status, 0);
    EXPECT_EQ(Support::run({ORVEL_TOOL_PROGRAM, {L"--version"}}).status, 0);
}

}  // namespace
}  // namespace Orvel::Tool
