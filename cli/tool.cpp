#include "cli/tool.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <new>
#include <ostream>

#include "cli/check_command.h"
#include "cli/consent_command.h"
#include "cli/generate_command.h"
#include "cli/report_command.h"

namespace Orvel::Tool {

namespace {

constexpr const char* kDescription = R"(Example:
  orvel-analytics report --app editor --app-version 2.1 --data-class usage.json events.jsonl

Talks to the analytics service of this machine. `orvel-analytics COMMAND --help` explains
a command.
)";

/// Answers `--help`, `--version` and a command line that cannot be used.
ExitStatus answer(const CLI::App& app, const CLI::ParseError& outcome, Console& console) {
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    const auto unknown = command->remaining();
    if (command->get_require_subcommand_min() > 0 && !unknown.empty()) {
        const std::string kind = unknown.front().starts_with('-') ? "option" : "command";
        throw Failure(ExitStatus::Usage,
                      "there is no " + kind + " \"" + unknown.front() + "\"; see --help");
    }
    const int code = app.exit(outcome, console.out, console.err);
    flushOutput(console);
    return code == 0 ? ExitStatus::Success : ExitStatus::Usage;
}

ExitStatus parseAndRun(const std::vector<std::string>& arguments, Console& console) {
    Action chosen;
    CLI::App app(kDescription, "orvel-analytics");
    // The same command line means the same on every platform, and a path may begin with a slash.
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", "orvel-analytics " ORVEL_TOOL_VERSION, "Print the version");
    app.require_subcommand(1);
    addReportCommand(app, chosen);
    addCheckCommand(app, chosen);
    addGenerateCommand(app, chosen);
    addConsentCommand(app, chosen);
    addDocumentsCommand(app, chosen);
    try {
        std::vector<const char*> argv;
        argv.reserve(arguments.size());
        for (const std::string& argument : arguments) {
            argv.push_back(argument.c_str());
        }
        app.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::ParseError& outcome) {
        return answer(app, outcome, console);
    }
    return chosen(console);
}

}  // namespace

ExitStatus runTool(const std::vector<std::string>& arguments, Console& console) {
    try {
        return parseAndRun(arguments, console);
    } catch (const Failure& failure) {
        console.err << "orvel-analytics: " << printable(failure.what()) << '\n';
        return failure.status();
    } catch (const std::bad_alloc&) {
        console.err << "orvel-analytics: out of memory\n";
    } catch (const std::exception& error) {
        console.err << "orvel-analytics: " << printable(error.what()) << '\n';
    }
    return ExitStatus::Failed;
}

}  // namespace Orvel::Tool
