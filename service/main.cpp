#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <variant>

#include "service/command_line.h"
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

std::filesystem::path dataFolderOf(const CommandLine& line) {
    return line.data ? *line.data : defaultDataFolder();
}

Settings settingsOf(const CommandLine& line) {
    const auto file = line.settings ? line.settings : defaultSettingsFile(runsAsRoot());
    return file ? readSettings(*file) : Settings{};
}

void print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw std::runtime_error("cannot write to standard output");
    }
}

StoreReader openReader(const CommandLine& line) {
    const auto file = databaseFile(dataFolderOf(line));
    std::error_code failure;
    const bool isThere = std::filesystem::exists(file, failure);
    if (failure) {
        throw std::system_error(failure,
                                "cannot look into the data folder " + file.parent_path().string());
    }
    if (!isThere) {
        throw std::runtime_error(
            fmt::format("there is no data in {}: has the service run with this folder?",
                        file.parent_path().string()));
    }
    return StoreReader(file);
}

void showStoredEvents(StoreReader& reader, const CommandLine& line, ListingForm form) {
    if (line.count) {
        print(fmt::format("{}\n", reader.countEvents(line.filter)));
    } else {
        listEvents(reader, line.filter, form, print);
    }
}

void showStoredConsent(StoreReader& reader, const CommandLine& line, ListingForm form) {
    if (line.history) {
        listConsentChanges(reader, form, print);
    } else {
        showConsent(reader, settingsOf(line), form, print);
    }
}

void show(const CommandLine& line) {
    StoreReader reader = openReader(line);
    const ListingForm form = line.json ? ListingForm::kJson : ListingForm::kText;
    switch (line.task) {
        case Task::kEvents:
            return showStoredEvents(reader, line, form);
        case Task::kConsent:
            return showStoredConsent(reader, line, form);
        case Task::kStatus:
            return showStatus(reader, settingsOf(line).limits, systemTime(), form, print);
        case Task::kClasses:
            return listClasses(reader, form, print);
        case Task::kServe:
            return;
    }
}

ExitStatus run(int argc, const char* const* argv) {
    const auto read = readCommandLine(argc, argv);
    if (const auto* status = std::get_if<ExitStatus>(&read)) {
        return *status;
    }
    const CommandLine& line = std::get<CommandLine>(read);
    if (line.task == Task::kServe) {
        Log log(writeToStandardError, systemTime);
        return serve(line.data, line.settings, ORVEL_VERSION, log) ? kSuccess : kFailure;
    }
    show(line);
    if (std::fflush(stdout) != 0) {
        throw std::runtime_error("cannot write to standard output");
    }
    return kSuccess;
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
