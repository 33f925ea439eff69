#include "examples/package_history/log_entry.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "support/time_zone.h"

namespace PackageHistory {
namespace {

TEST(LogEntryTest, ReadsTheStartOfTheProgram) {
    const LogEntry entry = parseLogEntry("2024-01-31 23:59:58 startup archives unpack");
    EXPECT_EQ(entry.time, "2024-01-31 23:59:58");
    EXPECT_EQ(entry.action, "startup");
    EXPECT_EQ(entry.command, "archives unpack");
    EXPECT_EQ(entry.package, "");
    EXPECT_EQ(entry.state, "");
}

TEST(LogEntryTest, ReadsAChangeOfState) {
    const LogEntry entry =
        parseLogEntry("2024-01-31 23:59:58 status half-configured quillpad:amd64 1:0.9.7+dfsg-3");
    EXPECT_EQ(entry.action, "status");
    EXPECT_EQ(entry.state, "half-configured");
    EXPECT_EQ(entry.package, "quillpad");
    EXPECT_EQ(entry.architecture, "amd64");
    EXPECT_EQ(entry.version, "1:0.9.7+dfsg-3");
    EXPECT_EQ(entry.oldVersion, "");
    EXPECT_EQ(entry.newVersion, "");
}

class LogActionTest : public testing::TestWithParam<const char*> {};

TEST_P(LogActionTest, IsReadWithItsPackageAndVersions) {
    const std::string action = GetParam();
    const LogEntry entry =
        parseLogEntry("2024-01-31 23:59:58 " + action + " quillpad:all <none> 2.0");
    EXPECT_EQ(entry.action, action);
    EXPECT_EQ(entry.package, "quillpad");
    EXPECT_EQ(entry.architecture, "all");
    EXPECT_EQ(entry.oldVersion, "<none>");
    EXPECT_EQ(entry.newVersion, "2.0");
    EXPECT_EQ(entry.version, "");
}

INSTANTIATE_TEST_SUITE_P(Actions, LogActionTest,
                         testing::Values("install", "upgrade", "configure", "trigproc", "remove",
                                         "purge", "disappear"));

TEST(LogEntryTest, APackageMayHaveNoArchitecture) {
    const LogEntry entry = parseLogEntry("2024-01-31 23:59:58 install quillpad <none> 2.0");
    EXPECT_EQ(entry.package, "quillpad");
    EXPECT_EQ(entry.architecture, "");
}

TEST(LogEntryTest, ReadsADecisionAboutAConfigurationFile) {
    const LogEntry entry = parseLogEntry("2024-01-31 23:59:58 conffile /etc/a.conf keep");
    EXPECT_EQ(entry.action, "conffile");
    EXPECT_EQ(entry.file, "/etc/a.conf");
    EXPECT_EQ(entry.decision, "keep");
}

TEST(LogEntryTest, AConfigurationFileMayHaveBlanksInItsName) {
    const LogEntry entry = parseLogEntry("2024-01-31 23:59:58 conffile /etc/a  b.conf install");
    EXPECT_EQ(entry.file, "/etc/a  b.conf");
    EXPECT_EQ(entry.decision, "install");
}

TEST(LogEntryTest, TheTimeIsLocalTime) {
    const Orvel::TestSupport::TimeZone zone("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(parseLogEntry("2024-01-01 07:00:00 startup archives unpack").seconds, 1'704'110'400);
    EXPECT_EQ(parseLogEntry("2024-07-01 08:00:00 startup archives unpack").seconds, 1'719'835'200);
}

TEST(LogEntryTest, AnHourThatTheClockSkippedIsStillAnEntry) {
    // A log may have been written in another time zone than the one that is set now.
    const Orvel::TestSupport::TimeZone zone("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(parseLogEntry("2024-03-10 02:30:00 startup archives unpack").time,
              "2024-03-10 02:30:00");
}

TEST(LogEntryTest, WhatIsNoEntryIsRefusedWithTheReason) {
    for (const char* line : {"",
                             "nonsense",
                             "2024-01-31",
                             "2024-01-31 23:59:58",
                             "2024-01-31 23:59:58 ",
                             "2024-01-31T23:59:58 startup archives unpack",
                             "2024-02-30 23:59:58 startup archives unpack",
                             "2024-1-31 23:59:58 startup archives unpack ",
                             "1969-12-30 00:00:00 startup archives unpack",
                             "2024-01-31 23:59:58startup archives unpack",
                             "2024-01-31 23:59:58 startup archives",
                             "2024-01-31 23:59:58 startup archives unpack now",
                             "2024-01-31 23:59:58 startup  unpack",
                             "2024-01-31 23:59:58 status installed a:amd64",
                             "2024-01-31 23:59:58 install a:amd64 1",
                             "2024-01-31 23:59:58 install a:amd64 <none> 1 2",
                             "2024-01-31 23:59:58 conffile /etc/a",
                             "2024-01-31 23:59:58 conffile  keep",
                             "2024-01-31 23:59:58 conffile /etc/a ",
                             "2024-01-31 23:59:58 explode a:amd64 <none> 1"}) {
        try {
            parseLogEntry(line);
            ADD_FAILURE() << "accepted: " << line;
        } catch (const std::invalid_argument& error) {
            EXPECT_STRNE(error.what(), "") << line;
        }
    }
}

}  // namespace
}  // namespace PackageHistory
