#include "cli/tool_fixture.h"

#include <fstream>
#include <sstream>

#include "cli/tool.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

using Analytics::Testing::Executed;
using Analytics::Testing::Execution;
using Analytics::Testing::ScriptedEndpoint;

ToolRun ToolTest::run(std::vector<std::string> arguments, const std::string& input) {
    arguments.insert(arguments.begin(), "orvel-analytics");
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    Console console{in, out, err, terminal, false, [] { return kNow; }};
    const ExitStatus status = runTool(arguments, console);
    return {static_cast<int>(status), out.str(), err.str()};
}

ToolRun ToolTest::runReport(const std::vector<std::string>& arguments, const std::string& input) {
    std::vector<std::string> all{"report",
                                 "--app",
                                 "app",
                                 "--app-version",
                                 "3",
                                 "--data-class",
                                 write("class.json", kDataClass)};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return run(all, input);
}

std::string ToolTest::write(const std::string& name, std::string_view content) {
    const auto path = folder.path() / name;
    std::ofstream(path, std::ios::binary) << content;
    return argumentFor(path);
}

std::string argumentFor(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

std::vector<std::string> ToolTest::commandsWith(std::string_view token) const {
    std::vector<std::string> commands;
    for (const Executed& executed : script.executed) {
        std::string command = toUtf8(executed.command);
        if (command.find(token) != std::string::npos) {
            commands.push_back(std::move(command));
        }
    }
    return commands;
}

void ToolTest::answerWithError(std::size_t place, const std::string& token,
                               const std::string& name) {
    script.onUnscripted = [place, token, name,
                           turn = std::size_t{0}](const Executed& executed) mutable {
        return turn++ == place
                   ? Execution{0, toWide("app::" + token + R"(::{"Results":["ErrorCode :)" + name +
                                         R"("]})")}
                   : ScriptedEndpoint::usualAnswer(executed);
    };
}

}  // namespace Orvel::Tool
