#include "cli/report_command.h"

#include <CLI/CLI.hpp>

#include <memory>

#include "cli/help.h"
#include "cli/report.h"

namespace Orvel::Tool {

namespace {

constexpr const char* kHelp = R"(Example:
  orvel-analytics report --app editor --app-version 2.1 --data-class usage.json events.jsonl

Registers a data class, then reads one JSON object a line, checks each against the
data class and sends them to the analytics service in batches. A line that is refused
is told on standard error, and the run goes on.

Exit status: 0 everything was accepted, 1 something was refused, 2 wrong usage,
3 the service cannot be reached, 4 the run broke off.
)";

constexpr std::size_t kLargestBatch = 1'000'000;

}  // namespace

void addReportCommand(CLI::App& app, Action& chosen) {
    auto options = std::make_shared<ReportOptions>();
    CLI::App* const command =
        app.add_subcommand("report", "Send the events of a file to the service");
    explain(*command, kHelp);
    command->add_option("--app", options->session.application, "The application's name")
        ->type_name("NAME")
        ->required();
    command
        ->add_option("--app-version", options->session.applicationVersion,
                     "The application's version")
        ->type_name("VERSION")
        ->required();
    command
        ->add_option("--user", options->session.user,
                     "The user's identifier, a GUID in braces; generated when not given")
        ->type_name("GUID");
    command
        ->add_option("--data-class", options->dataClassFile,
                     "The data class: a JSON file with name, id, version and fields")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("--time-member", options->timeMember,
                     "The member of an event that holds its time: seconds since 1970 (UTC), or "
                     "YYYY-MM-DD HH:MM:SS (local time, or with an offset); without this option "
                     "an event's time is that of its collection")
        ->type_name("NAME");
    command->add_option("--batch", options->batch, "Events sent at a time")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{1}, kLargestBatch))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Print the summary as one JSON object");
    command
        ->add_option("EVENTS", options->events,
                     "The events, one JSON object a line; \"-\" is standard input")
        ->type_name("")
        ->capture_default_str();
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return report(*options, console); };
    });
}

}  // namespace Orvel::Tool
