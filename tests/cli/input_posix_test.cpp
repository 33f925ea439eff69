/// Inputs that only a POSIX system has.

#include <gmock/gmock.h>

#include "cli/data_class_file.h"
#include "cli/failure.h"
#include "cli/tool_fixture.h"

namespace Orvel::Tool {
namespace {

using testing::HasSubstr;

using InputTest = ToolTest;

TEST_F(InputTest, ADataClassFileWithoutEndIsRefusedBeforeItFillsTheMemory) {
    try {
        static_cast<void>(readDataClassFile("/dev/zero"));
        FAIL() << "accepted";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("larger than 16 MiB"));
    }
}

TEST_F(InputTest, ThatFailsBreaksOff) {
    // Nothing can be read at the start of a process's own memory.
    const ToolRun result = runReport({"/proc/self/mem"});
    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.err, HasSubstr("reading broke off"));
}

TEST_F(InputTest, ADataClassFileThatFailsIsToldWithTheReason) {
    const ToolRun result =
        run({"report", "--app", "a", "--app-version", "1", "--data-class", "/proc/self/mem"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("/proc/self/mem: cannot be read: Input/output error"));
}

}  // namespace
}  // namespace Orvel::Tool
