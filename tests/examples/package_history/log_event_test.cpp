#include "examples/package_history/log_event.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>
#include <stdexcept>

namespace PackageHistory {
namespace {

using nlohmann::json;

json eventOf(const std::string& line) {
    return json::parse(Orvel::toUtf8(eventText(parseLogEntry(line))));
}

TEST(LogEventTest, HoldsWhatTheEntrySaysAndNothingElse) {
    EXPECT_EQ(eventOf("2024-01-31 23:59:58 startup archives unpack"),
              (json{{"time", "2024-01-31 23:59:58"},
                    {"action", "startup"},
                    {"command", "archives unpack"}}));
    EXPECT_EQ(eventOf("2024-01-31 23:59:58 upgrade a:amd64 1 2"),
              (json{{"time", "2024-01-31 23:59:58"},
                    {"action", "upgrade"},
                    {"package", "a"},
                    {"architecture", "amd64"},
                    {"old_version", "1"},
                    {"new_version", "2"}}));
    EXPECT_EQ(eventOf("2024-01-31 23:59:58 status installed a:amd64 2"),
              (json{{"time", "2024-01-31 23:59:58"},
                    {"action", "status"},
                    {"package", "a"},
                    {"architecture", "amd64"},
                    {"state", "installed"},
                    {"version", "2"}}));
    EXPECT_EQ(eventOf("2024-01-31 23:59:58 conffile /etc/\"a\\b\" keep"),
              (json{{"time", "2024-01-31 23:59:58"},
                    {"action", "conffile"},
                    {"file", "/etc/\"a\\b\""},
                    {"decision", "keep"}}));
}

TEST(LogEventTest, BytesThatAreNoTextAreRefused) {
    LogEntry entry;
    entry.file = "/etc/caf\xE9";
    EXPECT_THROW(eventText(entry), std::invalid_argument);
}

TEST(LogEventTest, EveryMemberIsAFieldOfTheDataClass) {
    LogEntryClass dataClass;
    EXPECT_EQ(dataClass.id, u"package_log_entry");
    std::set<std::string> fields;
    for (const auto& field : dataClass.getFields()) {
        fields.insert(Orvel::toUtf8(field.id));
    }
    for (const char* line :
         {"2024-01-31 23:59:58 startup archives unpack", "2024-01-31 23:59:58 upgrade a:amd64 1 2",
          "2024-01-31 23:59:58 status installed a:amd64 2",
          "2024-01-31 23:59:58 conffile /etc/a keep"}) {
        const json event = eventOf(line);
        for (const auto& member : event.items()) {
            EXPECT_EQ(fields.count(member.key()), 1U) << member.key();
        }
    }
}

}  // namespace
}  // namespace PackageHistory
