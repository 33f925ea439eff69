#ifndef ORVEL_CLI_TOOL_FIXTURE_H
#define ORVEL_CLI_TOOL_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/temporary_folder.h"

namespace Orvel::Tool {

/// What one run of the tool left behind.
struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

/// The argument that names a file.
std::string argumentFor(const std::filesystem::path& path);

/// Runs the tool inside the test, against a scripted RPC client.
class ToolTest : public testing::Test {
  protected:
    static constexpr std::int64_t kNow = 1'700'000'000;

    /// Runs `orvel-analytics ARGUMENTS...` with this text on standard input.
    ToolRun run(std::vector<std::string> arguments, const std::string& input = {});

    /// Runs `report` with the application "app", the data class `kDataClass` and these arguments.
    ToolRun runReport(const std::vector<std::string>& arguments, const std::string& input = {});

    /// Writes a file in the test's folder and returns its path.
    std::string write(const std::string& name, std::string_view content);

    /// The path of a file that does not exist.
    std::string missing() const { return argumentFor(folder.path() / "missing"); }

    /// The commands that arrived and hold this token, in UTF-8.
    std::vector<std::string> commandsWith(std::string_view token) const;

    /// Makes the service answer the command in this place, counted from 0 with the handshakes, with
    /// an error of this name.
    void answerWithError(std::size_t place, const std::string& token, const std::string& name);

    Analytics::Testing::ScriptedEndpoint script;
    Support::TemporaryFolder folder;
    bool terminal = false;
};

/// A data class with a text of at most 5 characters, an integer, and a field that must not be null.
inline constexpr std::string_view kDataClass = R"json({
  "name": "Some class", "id": "cls", "version": "1.2",
  "fields": [
    {"id": "text", "name": "Text", "nullable": "true", "type": "varchar(5)"},
    {"id": "count", "name": "Count", "nullable": "true", "type": "integer"}
  ]
})json";

}  // namespace Orvel::Tool

#endif
