#include "cli/check_command.h"

#include <CLI/CLI.hpp>

#include <memory>

#include "cli/check.h"
#include "cli/help.h"

namespace Orvel::Tool {

namespace {

constexpr const char* kCheckHelp = R"(Example:
  orvel-analytics check --data-class usage.json events.jsonl

Reads one JSON object a line and checks each as an application's library does when it
collects an event, without a service. A line that is refused is told on standard error,
with the first field at fault and its value.

Exit status: 0 every event would be collected, 1 something was refused, 2 wrong usage,
4 the run broke off.
)";

}  // namespace

void addCheckCommand(CLI::App& app, Action& chosen) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* const command =
        app.add_subcommand("check", "Check the events of a file without a service");
    explain(*command, kCheckHelp);
    command
        ->add_option("--data-class", options->dataClassFile,
                     "The data class: a JSON file with name, id, version and fields")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("--time-member", options->timeMember,
                     "The member of an event that holds its time, as for report; without this "
                     "option events need no time")
        ->type_name("NAME");
    command->add_flag("--json", options->json, "Print the summary as one JSON object");
    command
        ->add_option("EVENTS", options->events,
                     "The events, one JSON object a line; \"-\" is standard input")
        ->type_name("")
        ->capture_default_str();
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return check(*options, console); };
    });
}

}  // namespace Orvel::Tool
