#include "cli/generate_command.h"

#include <CLI/CLI.hpp>

#include <memory>

#include "cli/generate.h"
#include "cli/help.h"

namespace Orvel::Tool {

namespace {

constexpr const char* kGenerateHelp = R"(Example:
  orvel-analytics generate --data-class usage.json --output generated

Writes a C++ header and source for each data class: usage.h and usage.cpp, with the data
class itself and a class that builds its events, one typed setter a field. A file that
would not change is not touched.

Exit status: 0 the files are there, 2 wrong usage, 4 a file could not be written.
)";

}  // namespace

void addGenerateCommand(CLI::App& app, Action& chosen) {
    auto options = std::make_shared<GenerateOptions>();
    CLI::App* const command =
        app.add_subcommand("generate", "Write C++ classes for data classes and their events");
    explain(*command, kGenerateHelp);
    command
        ->add_option("--data-class", options->dataClassFiles,
                     "The data classes: JSON files with name, id, version and fields")
        ->type_name("FILE")
        ->required();
    command
        ->add_option("--output", options->folder,
                     "The folder that the files are written to; it is made when there is none")
        ->type_name("DIR")
        ->required();
    command
        ->add_option("--namespace", options->nameSpace,
                     "The namespace of the classes, such as my_app::events; none when not given")
        ->type_name("NAME");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return generate(*options, console); };
    });
}

}  // namespace Orvel::Tool
