#include "cli/consent_command.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <string>

#include "cli/consent.h"
#include "cli/help.h"

namespace Orvel::Tool {

namespace {

using Value = ProcessingPermissions::ProcessingPermissionValue;
using Options = std::shared_ptr<ConsentOptions>;

constexpr const char* kConsentHelp = R"(Example:
  orvel-analytics consent set --marketing rejected

Shows or changes what the user of this machine permits data to be processed for.
)";

constexpr const char* kGetHelp = R"(Example:
  orvel-analytics consent get

Shows the consent record that the analytics service keeps.

Exit status: 0 it is shown, 1 the service refused, 2 wrong usage, 3 the service cannot
be reached, 4 its reply cannot be read.
)";

constexpr const char* kSetHelp = R"(Example:
  orvel-analytics consent set --marketing rejected --support accepted

Changes the answers for the purposes named, leaves the others as they are, and shows the
consent record that the analytics service has then.

Exit status: 0 it is changed and shown, 1 the service refused, 2 wrong usage, 3 the service
cannot be reached, 4 its reply cannot be read.
)";

constexpr const char* kDocumentsHelp = R"(Example:
  orvel-analytics documents

Shows the addresses of the privacy documents.

Exit status: 0 they are shown, 2 wrong usage, 3 the service cannot be reached, 4 its reply
has no addresses that can be read.
)";

const std::map<std::string, Value>& answers() {
    static const std::map<std::string, Value> kAnswers = {
        {"accepted", Value::Accepted}, {"rejected", Value::Rejected}, {"unknown", Value::Unknown}};
    return kAnswers;
}

/// Adds a command with the options that all of them have.
CLI::App& addCommand(CLI::App& parent, const char* name, const char* summary, const char* help,
                     const Options& options) {
    CLI::App& command = *parent.add_subcommand(name, summary);
    explain(command, help);
    options->session.application = "orvel-analytics";
    options->session.applicationVersion = ORVEL_TOOL_VERSION;
    command
        .add_option("--app", options->session.application,
                    "The application that asks; the service may keep its name with a change")
        ->type_name("NAME")
        ->capture_default_str();
    command
        .add_option("--app-version", options->session.applicationVersion,
                    "The application's version")
        ->type_name("VERSION")
        ->capture_default_str();
    command.add_flag("--json", options->json, "Print one JSON object");
    return command;
}

void addPurpose(CLI::App& command, const char* option, const char* purpose,
                ConsentOptions::Answer& answer) {
    command
        .add_option_function<std::string>(
            option, [&answer](const std::string& word) { answer = answers().at(word); },
            std::string("The answer for ") + purpose)
        ->type_name("ANSWER")
        ->check(CLI::IsMember(&answers()));
}

void addGetCommand(CLI::App& consent, Action& chosen) {
    const auto options = std::make_shared<ConsentOptions>();
    addCommand(consent, "get", "Show the consent record", kGetHelp, options)
        .callback([options, &chosen] {
            chosen = [options](Console& console) { return getConsent(*options, console); };
        });
}

void addSetCommand(CLI::App& consent, Action& chosen) {
    const auto options = std::make_shared<ConsentOptions>();
    CLI::App& command =
        addCommand(consent, "set", "Change the answers for some purposes", kSetHelp, options);
    addPurpose(command, "--marketing", "marketing", options->marketing);
    addPurpose(command, "--support", "support", options->support);
    addPurpose(command, "--product-enhancement", "enhancing the product",
               options->productEnhancement);
    command.callback([options, &chosen] {
        if (!options->marketing && !options->support && !options->productEnhancement) {
            throw Failure(ExitStatus::Usage,
                          "name what to change: --marketing, --support, --product-enhancement");
        }
        chosen = [options](Console& console) { return setConsent(*options, console); };
    });
}

}  // namespace

void addConsentCommand(CLI::App& app, Action& chosen) {
    CLI::App& consent = *app.add_subcommand("consent", "Show or change the user's consent");
    explain(consent, kConsentHelp);
    consent.require_subcommand(1);
    addGetCommand(consent, chosen);
    addSetCommand(consent, chosen);
}

void addDocumentsCommand(CLI::App& app, Action& chosen) {
    const auto options = std::make_shared<ConsentOptions>();
    addCommand(app, "documents", "Show the addresses of the privacy documents", kDocumentsHelp,
               options)
        .callback([options, &chosen] {
            chosen = [options](Console& console) { return showDocuments(*options, console); };
        });
}

}  // namespace Orvel::Tool
