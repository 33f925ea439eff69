#include "service/settings_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <optional>
#include <string>

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
    for (const std::string name : {"device_serial_number", "country_code", "tenant",
                                   "consent_source", "managed", "process_data", "socket_mode",
                                   "socket_group", "privacyurl", "warrantyurl", "telemetryurl"}) {
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
