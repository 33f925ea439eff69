#include "service/settings_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

class SettingsFileTest : public testing::Test {
  protected:
    static void write(const std::filesystem::path& file, const std::string& content) {
        create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }
    Settings read(const std::string& content) {
        write(file_, content);
        return readSettings(file_);
    }
    /// What is said of a file with that content, without the file's name.
    std::string failure(const std::string& content) {
        try {
            read(content);
        } catch (const std::runtime_error& error) {
            const std::string what = error.what();
            EXPECT_THAT(what, StartsWith(file_.string() + ":"));
            return what.substr(file_.string().size() + 1);
        }
        return "(none)";
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "settings.toml";
};

TEST_F(SettingsFileTest, ReadsEverySetting) {
    EXPECT_EQ(read(R"(
        # A device of a company.
        device_serial_number = "SN-\u6F22 😀"
        country_code = 'PT'
        tenant = """a tenant"""
        consent_source = "the company"
        managed = true
        process_data = false
        socket_mode = "0660"
        socket_group = "staff"
        privacy_documents.privacyurl = "https://example.com/p?a=b#c"
        privacy_documents.warrantyurl = "http://example.com/w"
        privacy_documents.telemetryurl = "file:///usr/share/doc/telemetry.html"

        [limits]
        command_bytes = 1_000_000
        batch_events = 1
        class_fields = 9
        events_per_day = 2
        stored_bytes = 3_000_000
        stored_days = 4
        connections = 5
        idle_seconds = 6
        stalled_seconds = 7
        transfer_seconds = 8

        [access]
        users = ["root", 1001]

        [[access.applications]]
        name = "My \u0000 App"
        users = [1001, 0]
        data_classes = ["PageView", ""]

        [[access.applications]]
        name = "Other"
    )"),
              (Settings{.deviceSerialNumber = "SN-\u6F22 \U0001F600",
                        .countryCode = "PT",
                        .tenant = "a tenant",
                        .consentSource = "the company",
                        .managed = true,
                        .processData = false,
                        .privacyAddresses = {.privacy = "https://example.com/p?a=b#c",
                                             .warranty = "http://example.com/w",
                                             .telemetry = "file:///usr/share/doc/telemetry.html"},
                        .limits = {.commandBytes = 1'000'000,
                                   .batchEvents = 1,
                                   .classFields = 9,
                                   .eventsPerDay = 2,
                                   .storedBytes = 3'000'000,
                                   .storedDays = 4,
                                   .connections = 5,
                                   .idleSeconds = 6,
                                   .stalledSeconds = 7,
                                   .transferSeconds = 8},
                        .access = {.users = Users{0, 1001},
                                   .applications = {{{"My \0 App"s,
                                                      {.users = Users{0, 1001},
                                                       .dataClasses = {{"", "PageView"}}}},
                                                     {"Other", {}}}}},
                        .socketMode = "0660",
                        .socketGroup = "staff"}));
}

TEST_F(SettingsFileTest, WhatIsNotNamedHasItsDefault) {
    EXPECT_EQ(read(""), Settings{});
    Settings managed;
    managed.managed = true;
    EXPECT_EQ(read("managed = true"), managed);
    Settings documented;
    documented.privacyAddresses.warranty = "https://example.com/w";
    EXPECT_EQ(read("[privacy_documents]\nwarrantyurl = 'https://example.com/w'"), documented);
}

TEST_F(SettingsFileTest, ExampleNamesEverySettingWithItsDefault) {
    EXPECT_EQ(readSettings(ORVEL_EXAMPLE_SETTINGS), Settings{});
    std::ifstream in(ORVEL_EXAMPLE_SETTINGS);
    const std::string example(std::istreambuf_iterator<char>(in), {});
    for (const std::string name : {"device_serial_number", "country_code",     "tenant",
                                   "consent_source",       "managed",          "process_data",
                                   "socket_mode",          "socket_group",     "privacyurl",
                                   "warrantyurl",          "telemetryurl",     "command_bytes",
                                   "batch_events",         "events_per_day",   "stored_bytes",
                                   "stored_days",          "connections",      "idle_seconds",
                                   "stalled_seconds",      "transfer_seconds", "class_fields"}) {
        EXPECT_THAT(example, HasSubstr("\n" + name + " = "));
    }
}

TEST_F(SettingsFileTest, RefusesUnknownKeysWhereTheyStand) {
    EXPECT_EQ(failure("managed = true\n\n  manged = true\n"), "3:3: unknown key \"manged\"");
    EXPECT_EQ(failure("\"a\\u001bb\" = 1"), "1:1: unknown key \"a\\u001bb\"");
    EXPECT_EQ(failure("Managed = true"), "1:1: unknown key \"Managed\"");
    EXPECT_EQ(failure("[privacy_documents]\nprivacyURL = ''"), "2:1: unknown key \"privacyURL\"");
    EXPECT_THAT(failure("\n[service]\nmanaged = true"), HasSubstr("unknown key \"service\""));
}

TEST_F(SettingsFileTest, RefusesWrongTypesWhereTheyStand) {
    EXPECT_EQ(failure("managed = \"true\""), "1:11: this must be true or false");
    EXPECT_EQ(failure("process_data = 1"), "1:16: this must be true or false");
    EXPECT_EQ(failure("\ndevice_serial_number = 12345"),
              "2:24: this must be a text without control characters");
    EXPECT_EQ(failure("tenant = ['a']"), "1:10: this must be a text without control characters");
    EXPECT_EQ(failure("consent_source = 2024-01-31"),
              "1:18: this must be a text without control characters");
    EXPECT_EQ(failure("country_code = true"),
              "1:16: this must be two capital letters, or an empty text");
    EXPECT_EQ(failure("privacy_documents = 'https://example.com'"), "1:21: this must be a table");
    EXPECT_THAT(failure("[privacy_documents]\nprivacyurl = 1"), StartsWith("2:14: this must be "));
    EXPECT_THAT(failure("[[privacy_documents]]"), HasSubstr("this must be a table"));
}

TEST_F(SettingsFileTest, RefusesBadValuesWhereTheyStand) {
    for (const std::string code : {"pt", "P", "PRT", "P1", "\u00C9\u00C9", " "}) {
        EXPECT_EQ(failure("country_code = '" + code + "'"),
                  "1:16: this must be two capital letters, or an empty text");
    }
    for (const std::string address :
         {"example.com", "ftp://example.com", "HTTPS://example.com", "https://", "file:///",
          "https://example.com/a b", "https://example.com/\\n", "javascript:x", " "}) {
        EXPECT_EQ(failure("[privacy_documents]\nwarrantyurl = \"" + address + "\""),
                  "2:15: this must be an address that begins with https://, http:// or file:/// "
                  "and has no blanks, or an empty text")
            << address;
    }
    for (const std::string mode : {"666", "0888", "1777", "06660", "rw-rw----", " "}) {
        EXPECT_EQ(failure("socket_mode = '" + mode + "'"),
                  "1:15: this must be four octal digits, the first of them 0, or an empty text");
    }
    for (const std::string text : {"\\u0000", "a\\nb", "\\u001b[31m", "\\u007f"}) {
        EXPECT_EQ(failure("tenant = \"" + text + "\""),
                  "1:10: this must be a text without control characters");
    }
}

/// The least and the greatest value of every limit, and whether 0 is allowed, too.
struct LimitRange {
    const char* key;
    std::int64_t Limits::*setting;
    std::int64_t least;
    std::int64_t most;
    bool orNone = false;
};

const std::vector<LimitRange> kLimitRanges = {
    {"command_bytes", &Limits::commandBytes, 4096, 1'073'741'824},
    {"batch_events", &Limits::batchEvents, 1, 10'000'000},
    {"class_fields", &Limits::classFields, 1, 100'000},
    {"events_per_day", &Limits::eventsPerDay, 1, 1'000'000'000'000, true},
    {"stored_bytes", &Limits::storedBytes, 1'048'576, 1'099'511'627'776, true},
    {"stored_days", &Limits::storedDays, 1, 36'500, true},
    {"connections", &Limits::connections, 1, 100'000},
    {"idle_seconds", &Limits::idleSeconds, 1, 86'400},
    {"stalled_seconds", &Limits::stalledSeconds, 1, 86'400},
    {"transfer_seconds", &Limits::transferSeconds, 1, 86'400}};

TEST_F(SettingsFileTest, LimitsMayBeAnythingInTheirRange) {
    for (const LimitRange& range : kLimitRanges) {
        const std::string key = range.key;
        for (const std::int64_t value : {range.least, range.most}) {
            const Settings settings = read("[limits]\n" + key + " = " + std::to_string(value));
            EXPECT_EQ(settings.limits.*range.setting, value) << key;
        }
        if (range.orNone) {
            EXPECT_EQ(read("[limits]\n" + key + " = 0").limits.*range.setting, 0) << key;
        }
    }
}

TEST_F(SettingsFileTest, RefusesLimitsBeyondTheirRangeWithTheRange) {
    for (const LimitRange& range : kLimitRanges) {
        const std::string key = range.key;
        const std::string place = "2:" + std::to_string(key.size() + 4) + ": ";
        const std::string expected =
            place + key + " must be a whole number from " + std::to_string(range.least) + " to " +
            std::to_string(range.most) + (range.orNone ? ", or 0 for no limit" : "");
        std::vector<std::string> values = {std::to_string(range.least - (range.orNone ? 2 : 1)),
                                           std::to_string(range.most + 1),
                                           "-9223372036854775808",
                                           "9223372036854775807",
                                           "1.0",
                                           "'5'",
                                           "true"};
        if (!range.orNone) {
            values.emplace_back("0");
        }
        for (const std::string& value : values) {
            EXPECT_EQ(failure("[limits]\n" + key + " = " + value), expected) << value;
        }
    }
    EXPECT_EQ(failure("limits = 5"), "1:10: this must be a table");
    EXPECT_EQ(failure("[limits]\nevents = 5"), "2:1: unknown key \"events\"");
}

TEST_F(SettingsFileTest, EverybodyMayConnectUnlessItIsSaid) {
    EXPECT_EQ(read("[access]").access, Access{});
    EXPECT_EQ(read("[access]\nusers = []").access.users, Users{});
    const auto nobody = read("[access]\napplications = []").access.applications;
    ASSERT_TRUE(nobody);
    EXPECT_TRUE(nobody->empty());
    const auto application = read("[[access.applications]]\nname = 'A'").access.applications;
    EXPECT_EQ(application->at("A"), AllowedApplication{});
    EXPECT_EQ(read("access.users = [4294967294]").access.users, Users{4294967294});
}

TEST_F(SettingsFileTest, RefusesUsersThatAreNone) {
    for (const std::string user :
         {"-1", "4294967295", "9223372036854775807", "1.5", "true", "[]"}) {
        EXPECT_EQ(failure("access.users = [" + user + "]"),
                  "1:17: a user must be a name or a whole number from 0 to 4294967294");
    }
    EXPECT_EQ(failure("access.users = ['nobody at all']"),
              "1:17: this machine has no user \"nobody at all\"");
    EXPECT_EQ(failure("access.users = [\"root\\u0000\"]"),
              "1:17: this machine has no user \"root\\u0000\"");
    EXPECT_EQ(failure("access.users = 'root'"), "1:16: this must be an array");
}

TEST_F(SettingsFileTest, RefusesApplicationsThatAreNone) {
    const std::string begin = "[[access.applications]]\n";
    EXPECT_THAT(failure(begin), HasSubstr("an application must have a name"));
    EXPECT_THAT(failure(begin + "name = ''"), HasSubstr("an application must have a name"));
    EXPECT_EQ(failure(begin + "name = 5"), "2:8: this must be a text");
    EXPECT_EQ(failure(begin + "name = 'A'\ndata_classes = 'B'"), "3:16: this must be an array");
    EXPECT_EQ(failure(begin + "name = 'A'\ndata_classes = [5]"), "3:17: this must be a text");
    EXPECT_EQ(failure(begin + "name = 'A'\nclasses = []"), "3:1: unknown key \"classes\"");
    EXPECT_THAT(failure(begin + "name = 'A'\n" + begin + "name = 'A'"),
                HasSubstr("the application \"A\" is named twice"));
    EXPECT_EQ(failure("access.applications = ['A']"), "1:24: this must be a table");
    EXPECT_EQ(failure("access.applications = 'A'"), "1:23: this must be an array");
    EXPECT_EQ(failure("access = 'everybody'"), "1:10: this must be a table");
}

TEST_F(SettingsFileTest, RefusesTextsThatClientsTakeForErrors) {
    EXPECT_EQ(failure("tenant = 'My ErrorCode'"), "1:10: this must not hold the word ErrorCode");
    EXPECT_EQ(failure("[privacy_documents]\nprivacyurl = 'https://example.com/ErrorCode'"),
              "2:14: this must not hold the word ErrorCode");
}

TEST_F(SettingsFileTest, RefusesWhatIsNoTomlWhereItStands) {
    EXPECT_THAT(failure("managed = maybe"), StartsWith("1:11: "));
    EXPECT_THAT(failure("\n\nmanaged true"), StartsWith("3:9: "));
    EXPECT_THAT(failure("tenant = \"a"), StartsWith("1:"));
    EXPECT_THAT(failure("managed = true\nmanaged = true"), StartsWith("2:"));
    EXPECT_THAT(failure("tenant = \"\xFF\""), StartsWith("1:"));
    EXPECT_THAT(failure("tenant = \"\\uD800\""), StartsWith("1:"));
    EXPECT_THAT(failure("tenant = \"a\0b\""s), StartsWith("1:"));
    EXPECT_THAT(failure("tenant = " + std::string(100'000, '[')), StartsWith("1:"));
}

TEST_F(SettingsFileTest, SaysWhichFileCannotBeRead) {
    for (const std::filesystem::path& file : {folder_.path() / "missing.toml", folder_.path()}) {
        try {
            readSettings(file);
            FAIL() << file << " was read";
        } catch (const std::system_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(file.string()));
        }
    }
}

TEST_F(SettingsFileTest, RefusesAFileWithoutEnd) {
    EXPECT_THROW(readSettings("/dev/zero"), std::system_error);
}

/// The environment of a user whose home is the test's folder.
class DefaultSettingsTest : public SettingsFileTest {
  protected:
    void SetUp() override {
        ::setenv("HOME", (folder_.path() / "home").c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", (folder_.path() / "config").c_str(), 1);
    }
    const std::filesystem::path configured_ =
        folder_.path() / "config/orvel-analytics/settings.toml";
    const std::filesystem::path atHome_ =
        folder_.path() / "home/.config/orvel-analytics/settings.toml";
};

TEST_F(DefaultSettingsTest, AreThoseInTheUsersConfigurationFolder) {
    EXPECT_EQ(defaultSettingsFile(false), std::nullopt);
    write(atHome_, "");
    EXPECT_EQ(defaultSettingsFile(false), std::nullopt);
    write(configured_, "");
    EXPECT_EQ(defaultSettingsFile(false), configured_);
}

TEST_F(DefaultSettingsTest, AreThoseAtHomeWithoutAConfigurationFolder) {
    write(atHome_, "");
    ::setenv("XDG_CONFIG_HOME", "config", 1);
    EXPECT_EQ(defaultSettingsFile(false), atHome_);
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(defaultSettingsFile(false), atHome_);
    ::unsetenv("HOME");
    EXPECT_EQ(defaultSettingsFile(false), std::nullopt);
}

TEST_F(DefaultSettingsTest, OfRootDoNotDependOnTheEnvironment) {
    write(atHome_, "");
    write(configured_, "");
    const std::filesystem::path ofTheSystem = "/etc/orvel-analytics/settings.toml";
    EXPECT_EQ(defaultSettingsFile(true),
              exists(ofTheSystem) ? std::optional{ofTheSystem} : std::nullopt);
}

TEST_F(DefaultSettingsTest, LinkThatLeadsNowhereIsThere) {
    create_directories(configured_.parent_path());
    create_symlink(folder_.path() / "missing", configured_);
    EXPECT_EQ(defaultSettingsFile(false), configured_);
}

}  // namespace
}  // namespace Orvel::Service
