#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "service/consent_listing.h"
#include "service/data_folder.h"
#include "service/listing.h"
#include "service/process.h"
#include "service/serve.h"
#include "service/settings_file.h"
#include "service/status_listing.h"
#include "service/store_reader.h"

namespace {

using namespace Orvel::Service;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

constexpr const char* kDescription =
    R"(The local analytics service: keeps what the applications of this machine report.

Example:
  orvel-analyticsd serve --data ~/analytics &
  orvel-analyticsd events --data ~/analytics --json

Exit status: 0 success, 1 failure, 2 wrong usage.
)";

/// What the command line says.
struct Arguments {
    std::optional<std::filesystem::path> data;
    std::optional<std::filesystem::path> settings;
    EventFilter filter;
    bool good = false;
    bool bad = false;
    bool json = false;
    bool count = false;
    bool history = false;

    std::filesystem::path dataFolder() const { return data ? *data : defaultDataFolder(); }
    Settings readSettings() const {
        const auto file = settings ? settings : defaultSettingsFile(runsAsRoot());
        return file ? Orvel::Service::readSettings(*file) : Settings{};
    }
    ListingForm form() const { return json ? ListingForm::kJson : ListingForm::kText; }
};

void print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw std::runtime_error("cannot write to standard output");
    }
}

StoreReader openReader(const Arguments& arguments) {
    const auto file = databaseFile(arguments.dataFolder());
    if (!std::filesystem::exists(file)) {
        throw std::runtime_error(
            fmt::format("there is no data in {}: has the service run with this folder?",
                        file.parent_path().string()));
    }
    return StoreReader(file);
}

int runService(const Arguments& arguments) {
    Log log(writeToStandardError, systemTime);
    return serve(arguments.data, arguments.settings, ORVEL_VERSION, log) ? kSuccess : kFailure;
}

int runEvents(Arguments arguments) {
    if (arguments.good) {
        arguments.filter.kind = EventFilter::Kind::kGood;
    } else if (arguments.bad) {
        arguments.filter.kind = EventFilter::Kind::kRefused;
    }
    StoreReader reader = openReader(arguments);
    if (arguments.count) {
        print(fmt::format("{}\n", reader.countEvents(arguments.filter)));
    } else {
        listEvents(reader, arguments.filter, arguments.form(), print);
    }
    return kSuccess;
}

int runClasses(const Arguments& arguments) {
    StoreReader reader = openReader(arguments);
    listClasses(reader, arguments.form(), print);
    return kSuccess;
}

int runConsent(const Arguments& arguments) {
    StoreReader reader = openReader(arguments);
    if (arguments.history) {
        listConsentChanges(reader, arguments.form(), print);
    } else {
        showConsent(reader, arguments.readSettings(), arguments.form(), print);
    }
    return kSuccess;
}

int runStatus(const Arguments& arguments) {
    StoreReader reader = openReader(arguments);
    showStatus(reader, arguments.readSettings().limits, systemTime(), arguments.form(), print);
    return kSuccess;
}

CLI::App* addCommand(CLI::App& app, Arguments& arguments, const char* name,
                     const char* description) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("--data", arguments.data, "Data folder")->type_name("DIR");
    return command;
}

void addJson(CLI::App& command, Arguments& arguments) {
    command.add_flag("--json", arguments.json, "Print one JSON object a line");
}

CLI::Option* addSettings(CLI::App& command, Arguments& arguments) {
    return command.add_option("--settings", arguments.settings, "Settings file")->type_name("FILE");
}

CLI::App* addService(CLI::App& app, Arguments& arguments) {
    CLI::App* service = addCommand(app, arguments, "serve",
                                   R"(Run the service until SIGTERM or SIGINT.

The settings file says, among other things, how much the service takes on and who
may talk with it.

Example:
  orvel-analyticsd serve --data /var/lib/orvel-analytics
)");
    addSettings(*service, arguments);
    return service;
}

CLI::App* addConsent(CLI::App& app, Arguments& arguments) {
    CLI::App* consent = addCommand(app, arguments, "consent",
                                   R"(Show the user's consent, or how it was changed.

Example:
  orvel-analyticsd consent --history --json
)");
    CLI::Option* settings = addSettings(*consent, arguments);
    consent->add_flag("--history", arguments.history, "Show every change, oldest first")
        ->excludes(settings);
    addJson(*consent, arguments);
    return consent;
}

CLI::App* addStatus(CLI::App& app, Arguments& arguments) {
    CLI::App* status = addCommand(app, arguments, "status",
                                  R"(Show how much is stored, and what was removed to make room.

Example:
  orvel-analyticsd status --json
)");
    addSettings(*status, arguments);
    addJson(*status, arguments);
    return status;
}

/// CLI11's own check of a range tells people about numbers of 300 digits.
std::string isCount(const std::string& text) {
    const bool isDigits =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return isDigits ? std::string() : "a number of events is wanted, not " + text;
}

CLI::App* addEvents(CLI::App& app, Arguments& arguments) {
    CLI::App* events = addCommand(app, arguments, "events",
                                  R"(Show the events that are stored, oldest first.

Example:
  orvel-analyticsd events --bad --json
)");
    CLI::Option* good =
        events->add_flag("--good", arguments.good, "Only events that were accepted");
    events->add_flag("--bad", arguments.bad, "Only events that were refused")->excludes(good);
    events->add_option("--class", arguments.filter.className, "Only events of this data class")
        ->type_name("ID");
    events->add_option("--application", arguments.filter.application, "Only this application's")
        ->type_name("NAME");
    CLI::Option* limit = events->add_option("--limit", arguments.filter.limit, "At most so many")
                             ->type_name("N")
                             ->check(isCount);
    events->add_flag("--count", arguments.count, "Print only how many there are")->excludes(limit);
    addJson(*events, arguments);
    return events;
}

int run(int argc, char** argv) {
    CLI::App app(kDescription);
    app.set_version_flag("--version", "orvel-analyticsd " ORVEL_VERSION);
    app.require_subcommand(1);
    Arguments arguments;
    const CLI::App* service = addService(app, arguments);
    const CLI::App* events = addEvents(app, arguments);
    CLI::App* classes = addCommand(app, arguments, "classes",
                                   R"(Show the data classes that are registered.

Example:
  orvel-analyticsd classes --json
)");
    addJson(*classes, arguments);
    const CLI::App* consent = addConsent(app, arguments);
    const CLI::App* status = addStatus(app, arguments);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kSuccess : kWrongUsage;
    }
    if (service->parsed()) {
        return runService(arguments);
    }
    const int result = events->parsed()    ? runEvents(arguments)
                       : consent->parsed() ? runConsent(arguments)
                       : status->parsed()  ? runStatus(arguments)
                                           : runClasses(arguments);
    if (std::fflush(stdout) != 0) {
        throw std::runtime_error("cannot write to standard output");
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        fmt::print(stderr, "orvel-analyticsd: {}\n", error.what());
        return kFailure;
    }
}
