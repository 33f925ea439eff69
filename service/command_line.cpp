#include "service/command_line.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "service/data_folder.h"
#include "service/visible_text.h"

namespace Orvel::Service {

namespace {

constexpr const char* kProgramHelp = R"(Example:
  orvel-analyticsd serve --data ~/analytics &
  orvel-analyticsd events --data ~/analytics --json

The local analytics service: keeps what the applications of this machine report.
`orvel-analyticsd COMMAND --help` explains a command.

Exit status: 0 success, 1 failure, 2 wrong usage.
)";

constexpr const char* kServeHelp = R"(Example:
  orvel-analyticsd serve --data ~/analytics

Runs the service in the foreground until SIGTERM or SIGINT. The settings file says, among
other things, how much the service takes on and who may talk with it.
)";

constexpr const char* kEventsHelp = R"(Example:
  orvel-analyticsd events --bad --json

Shows the events that are stored, oldest first: all of them, unless options say which.
)";

constexpr const char* kClassesHelp = R"(Example:
  orvel-analyticsd classes --json

Shows the data classes that are registered.
)";

constexpr const char* kConsentHelp = R"(Example:
  orvel-analyticsd consent --history --json

Shows the user's consent as the service answers with it, or how it was changed.
)";

constexpr const char* kStatusHelp = R"(Example:
  orvel-analyticsd status --json

Shows how much is stored, and what was removed to make room.
)";

/// Begins a command's own `--help` with a text. In the list of its parent's commands stands the
/// command's description, which is one line.
class ExplainingFormatter : public CLI::Formatter {
  public:
    explicit ExplainingFormatter(std::string text) : text_(std::move(text)) {}

    std::string make_description(const CLI::App* /*command*/) const override {
        return text_ + '\n';
    }

  private:
    std::string text_;
};

/// The data folder that is used when none is named; empty when none is known.
std::string usualDataFolder() {
    try {
        return defaultDataFolder().string();
    } catch (const std::exception&) {
        return {};
    }
}

CLI::App& addCommand(CLI::App& app, CommandLine& line, Task task, const char* name,
                     const char* summary, const char* help) {
    CLI::App& added = *app.add_subcommand(name, summary);
    added.formatter(std::make_shared<ExplainingFormatter>(help));
    added.add_option("--data", line.data, "Data folder")
        ->type_name("DIR")
        ->default_str(usualDataFolder());
    added.callback([&line, task] { line.task = task; });
    return added;
}

void addJson(CLI::App& command, CommandLine& line) {
    command.add_flag("--json", line.json, "Print one JSON object a line");
}

CLI::Option* addSettings(CLI::App& command, CommandLine& line) {
    return command
        .add_option("--settings", line.settings,
                    "Settings file; without this option orvel-analytics/settings.toml, in /etc for "
                    "root and in $XDG_CONFIG_HOME or ~/.config for others, if it is there")
        ->type_name("FILE");
}

/// CLI11's own check of a range tells people about numbers of 300 digits.
std::string isCount(const std::string& text) {
    const bool isDigits =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return isDigits ? std::string() : "a number of events is wanted, not " + text;
}

void addEvents(CLI::App& app, CommandLine& line) {
    CLI::App& events = addCommand(app, line, Task::kEvents, "events",
                                  "Show the events that are stored", kEventsHelp);
    const auto only = [&line](EventFilter::Kind kind) {
        return [&line, kind] { line.filter.kind = kind; };
    };
    CLI::Option* const good = events.add_flag_callback("--good", only(EventFilter::Kind::kGood),
                                                       "Only events that were accepted");
    events
        .add_flag_callback("--bad", only(EventFilter::Kind::kRefused),
                           "Only events that were refused")
        ->excludes(good);
    events.add_option("--class", line.filter.className, "Only events of this data class")
        ->type_name("ID");
    events.add_option("--application", line.filter.application, "Only this application's")
        ->type_name("NAME");
    CLI::Option* const limit =
        events
            .add_option("--limit", line.filter.limit,
                        "At most so many, the oldest ones; without this option all")
            ->type_name("N")
            ->check(isCount);
    events.add_flag("--count", line.count, "Print only how many there are")->excludes(limit);
    addJson(events, line);
}

void addConsent(CLI::App& app, CommandLine& line) {
    CLI::App& consent = addCommand(app, line, Task::kConsent, "consent",
                                   "Show the user's consent, or how it was changed", kConsentHelp);
    CLI::Option* const settings = addSettings(consent, line);
    consent.add_flag("--history", line.history, "Show every change, oldest first")
        ->excludes(settings);
    addJson(consent, line);
}

void addCommands(CLI::App& app, CommandLine& line) {
    addSettings(addCommand(app, line, Task::kServe, "serve",
                           "Run the service until SIGTERM or SIGINT", kServeHelp),
                line);
    addEvents(app, line);
    addJson(addCommand(app, line, Task::kClasses, "classes",
                       "Show the data classes that are registered", kClassesHelp),
            line);
    addConsent(app, line);
    CLI::App& status =
        addCommand(app, line, Task::kStatus, "status",
                   "Show how much is stored, and what was removed to make room", kStatusHelp);
    addSettings(status, line);
    addJson(status, line);
}

/// Answers `--help`, `--version` and a command line that cannot be used.
ExitStatus answer(const CLI::App& app, const CLI::ParseError& outcome) {
    // Without a command, CLI11 asks for one and does not say that it did not know a word.
    const auto unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty()) {
        const char* const kind = unknown.front().starts_with('-') ? "option" : "command";
        fmt::print(stderr, "orvel-analyticsd: there is no {} \"{}\"; see --help\n", kind,
                   visibleText(unknown.front()));
        return kWrongUsage;
    }
    return app.exit(outcome) == 0 ? kSuccess : kWrongUsage;
}

}  // namespace

std::variant<CommandLine, ExitStatus> readCommandLine(int argc, const char* const* argv) {
    CLI::App app("", "orvel-analyticsd");
    app.formatter(std::make_shared<ExplainingFormatter>(kProgramHelp));
    app.set_version_flag("--version", "orvel-analyticsd " ORVEL_VERSION, "Print the version");
    app.require_subcommand(1);
    CommandLine line;
    addCommands(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& outcome) {
        return answer(app, outcome);
    }
    return line;
}

}  // namespace Orvel::Service
