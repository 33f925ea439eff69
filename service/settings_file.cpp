#include "service/settings_file.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "service/process.h"
#include "service/visible_text.h"

namespace Orvel::Service {

namespace {

constexpr std::size_t kLargestFile = 1U << 20U;
/// Clients take a reply that holds this word anywhere for an error.
constexpr std::string_view kErrorMark = "ErrorCode";

/// Something wrong in a file, and where.
struct Fault {
    toml::source_position place;
    std::string what;
};

using Take = std::function<void(const toml::node& value)>;
using Rule = std::function<bool(std::string_view text)>;

[[noreturn]] void failToRead(const std::filesystem::path& file, int error) {
    throw std::system_error(error, std::generic_category(),
                            "cannot read the settings file " + file.string());
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::string content;
    std::array<char, 4096> piece;
    while (in.read(piece.data(), piece.size()) || in.gcount() > 0) {
        content.append(piece.data(), static_cast<std::size_t>(in.gcount()));
        if (content.size() > kLargestFile) {
            failToRead(file, EFBIG);
        }
    }
    if (!in.is_open() || in.bad()) {
        failToRead(file, errno);
    }
    return content;
}

/// Hands every value of a table to whoever knows its key.
void takeTable(const toml::node& node, const std::map<std::string_view, Take>& known) {
    if (!node.is_table()) {
        throw Fault{node.source().begin, "this must be a table"};
    }
    const toml::table& table = *node.as_table();
    for (const auto& [key, value] : table) {
        const auto take = known.find(key.str());
        if (take == known.end()) {
            throw Fault{key.source().begin,
                        fmt::format("unknown key \"{}\"", visibleText(key.str()))};
        }
        take->second(value);
    }
}

Take takeBoolean(bool& setting) {
    return [&setting](const toml::node& value) {
        const auto boolean = value.value_exact<bool>();
        if (!boolean) {
            throw Fault{value.source().begin, "this must be true or false"};
        }
        setting = *boolean;
    };
}

/// @param form says what a text that follows the rule is.
Take takeText(std::string& setting, Rule rule, std::string_view form) {
    return [&setting, rule = std::move(rule), form](const toml::node& value) {
        auto text = value.value_exact<std::string>();
        if (!text || !rule(*text)) {
            throw Fault{value.source().begin, fmt::format("this must be {}", form)};
        }
        if (text->find(kErrorMark) != std::string::npos) {
            throw Fault{value.source().begin,
                        fmt::format("this must not hold the word {}", kErrorMark)};
        }
        setting = std::move(*text);
    };
}

bool isControl(char character) {
    return (character >= 0 && character < ' ') || character == '\x7F';
}

bool isPlainText(std::string_view text) {
    return std::none_of(text.begin(), text.end(), isControl);
}

bool isCountryCode(std::string_view text) {
    const auto isLetter = [](char character) { return character >= 'A' && character <= 'Z'; };
    return text.empty() || (text.size() == 2 && std::all_of(text.begin(), text.end(), isLetter));
}

bool isFileMode(std::string_view text) {
    const bool isOctal = text.find_first_not_of("01234567") == std::string_view::npos;
    return text.empty() || (isOctal && text.size() == 4 && text.front() == '0');
}

bool isAddress(std::string_view text) {
    const auto continues = [text](std::string_view begin) {
        return text.starts_with(begin) && text.size() > begin.size();
    };
    const bool isKnown = continues("https://") || continues("http://") || continues("file:///");
    return text.empty() ||
           (isKnown && isPlainText(text) && text.find(' ') == std::string_view::npos);
}

Take takePlainText(std::string& setting) {
    return takeText(setting, isPlainText, "a text without control characters");
}

Take takeAddress(std::string& setting) {
    return takeText(setting, isAddress,
                    "an address that begins with https://, http:// or file:/// and has no blanks, "
                    "or an empty text");
}

Take takeAddresses(PrivacyAddresses& addresses) {
    return [&addresses](const toml::node& value) {
        takeTable(value, {{"privacyurl", takeAddress(addresses.privacy)},
                          {"warrantyurl", takeAddress(addresses.warranty)},
                          {"telemetryurl", takeAddress(addresses.telemetry)}});
    };
}

struct Range {
    std::int64_t least;
    std::int64_t most;
    /// Whether 0 is allowed, too.
    bool orNone = false;
};

Take takeNumber(std::string_view key, std::int64_t& setting, Range range) {
    return [key, &setting, range](const toml::node& value) {
        const auto number = value.value_exact<std::int64_t>();
        const bool fits = number && ((*number >= range.least && *number <= range.most) ||
                                     (range.orNone && *number == 0));
        if (!fits) {
            throw Fault{value.source().begin,
                        fmt::format("{} must be a whole number from {} to {}{}", key, range.least,
                                    range.most, range.orNone ? ", or 0 for no limit" : "")};
        }
        setting = *number;
    };
}

Take takeLimits(Limits& limits) {
    return [&limits](const toml::node& value) {
        std::map<std::string_view, Take> known;
        const auto add = [&known](std::string_view key, std::int64_t& setting, Range range) {
            known.emplace(key, takeNumber(key, setting, range));
        };
        constexpr std::int64_t kMebibyte = 1 << 20;
        constexpr std::int64_t kDay = 86'400;
        add("command_bytes", limits.commandBytes, {4096, 1024 * kMebibyte});
        add("batch_events", limits.batchEvents, {1, 10'000'000});
        add("class_fields", limits.classFields, {1, 100'000});
        add("events_per_day", limits.eventsPerDay, {1, 1'000'000'000'000, true});
        add("stored_bytes", limits.storedBytes, {kMebibyte, kMebibyte * kMebibyte, true});
        add("stored_days", limits.storedDays, {1, 36'500, true});
        add("connections", limits.connections, {1, 100'000});
        add("idle_seconds", limits.idleSeconds, {1, kDay});
        add("stalled_seconds", limits.stalledSeconds, {1, kDay});
        add("transfer_seconds", limits.transferSeconds, {1, kDay});
        takeTable(value, known);
    };
}

/// Hands every value of an array to a function.
void takeArray(const toml::node& value, const Take& take) {
    if (!value.is_array()) {
        throw Fault{value.source().begin, "this must be an array"};
    }
    for (const toml::node& element : *value.as_array()) {
        take(element);
    }
}

std::uint32_t userOf(const toml::node& value) {
    // The greatest number stands for no user at all.
    constexpr std::int64_t kLast = std::int64_t{std::numeric_limits<std::uint32_t>::max()} - 1;
    if (const auto number = value.value_exact<std::int64_t>();
        number && *number >= 0 && *number <= kLast) {
        return static_cast<std::uint32_t>(*number);
    }
    const auto name = value.value_exact<std::string>();
    if (!name) {
        throw Fault{value.source().begin,
                    fmt::format("a user must be a name or a whole number from 0 to {}", kLast)};
    }
    const auto user = userNumber(*name);
    if (!user) {
        throw Fault{value.source().begin,
                    fmt::format("this machine has no user \"{}\"", visibleText(*name))};
    }
    return *user;
}

Take takeUsers(std::optional<Users>& users) {
    return [&users](const toml::node& value) {
        users.emplace();
        takeArray(value, [&users](const toml::node& user) { users->insert(userOf(user)); });
    };
}

std::string textOf(const toml::node& value) {
    auto text = value.value_exact<std::string>();
    if (!text) {
        throw Fault{value.source().begin, "this must be a text"};
    }
    return std::move(*text);
}

void takeApplication(const toml::node& value, Access& access) {
    std::string name;
    AllowedApplication application;
    takeTable(value, {{"name", [&name](const toml::node& text) { name = textOf(text); }},
                      {"users", takeUsers(application.users)},
                      {"data_classes", [&application](const toml::node& classes) {
                           application.dataClasses.emplace();
                           takeArray(classes, [&application](const toml::node& text) {
                               application.dataClasses->insert(textOf(text));
                           });
                       }}});
    if (name.empty()) {
        throw Fault{value.source().begin, "an application must have a name"};
    }
    if (!access.applications->emplace(name, std::move(application)).second) {
        throw Fault{value.source().begin,
                    fmt::format("the application \"{}\" is named twice", visibleText(name))};
    }
}

Take takeAccess(Access& access) {
    return [&access](const toml::node& value) {
        takeTable(value, {{"users", takeUsers(access.users)},
                          {"applications", [&access](const toml::node& applications) {
                               access.applications.emplace();
                               takeArray(applications, [&access](const toml::node& application) {
                                   takeApplication(application, access);
                               });
                           }}});
    };
}

Settings settingsOf(const std::string& content) {
    Settings settings;
    takeTable(
        toml::parse(content),
        {{"device_serial_number", takePlainText(settings.deviceSerialNumber)},
         {"country_code",
          takeText(settings.countryCode, isCountryCode, "two capital letters, or an empty text")},
         {"tenant", takePlainText(settings.tenant)},
         {"consent_source", takePlainText(settings.consentSource)},
         {"managed", takeBoolean(settings.managed)},
         {"process_data", takeBoolean(settings.processData)},
         {"privacy_documents", takeAddresses(settings.privacyAddresses)},
         {"socket_mode", takeText(settings.socketMode, isFileMode,
                                  "four octal digits, the first of them 0, or an empty text")},
         {"socket_group", takePlainText(settings.socketGroup)},
         {"limits", takeLimits(settings.limits)},
         {"access", takeAccess(settings.access)}});
    return settings;
}

[[noreturn]] void fail(const std::filesystem::path& file, const Fault& fault) {
    throw std::runtime_error(fmt::format("{}:{}:{}: {}", file.string(), fault.place.line,
                                         fault.place.column, fault.what));
}

}  // namespace

Settings readSettings(const std::filesystem::path& file) {
    try {
        return settingsOf(contentOf(file));
    } catch (const toml::parse_error& error) {
        fail(file, {error.source().begin, std::string(error.description())});
    } catch (const Fault& fault) {
        fail(file, fault);
    }
}

}  // namespace Orvel::Service
