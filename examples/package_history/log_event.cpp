#include "examples/package_history/log_event.h"

#include <nlohmann/json.hpp>

#include <array>
#include <stdexcept>

namespace PackageHistory {

namespace {

struct Field {
    const char* id;
    const char* name;
    const char* type;
    const char* nullable;
    std::string LogEntry::*text;
};

constexpr std::array kFields{
    Field{"time", "Time", "varchar(19)", "false", &LogEntry::time},
    Field{"action", "Action", "varchar(16)", "false", &LogEntry::action},
    Field{"package", "Package", "varchar(255)", "true", &LogEntry::package},
    Field{"architecture", "Architecture", "varchar(64)", "true", &LogEntry::architecture},
    Field{"old_version", "Version before", "varchar(255)", "true", &LogEntry::oldVersion},
    Field{"new_version", "Version after", "varchar(255)", "true", &LogEntry::newVersion},
    Field{"state", "State", "varchar(64)", "true", &LogEntry::state},
    Field{"version", "Version in that state", "varchar(255)", "true", &LogEntry::version},
    Field{"command", "Command", "varchar(255)", "true", &LogEntry::command},
    Field{"file", "Configuration file", "varchar(4096)", "true", &LogEntry::file},
    Field{"decision", "Decision", "varchar(64)", "true", &LogEntry::decision},
};

}  // namespace

LogEntryClass::LogEntryClass() {
    name = ORVEL_TEXT("Package log entry");
    id = ORVEL_TEXT("package_log_entry");
    version = ORVEL_TEXT("1.0");
}

std::list<Orvel::Analytics::DataClass::DataClassFieldInfo> LogEntryClass::getFields() {
    std::list<Orvel::Analytics::DataClass::DataClassFieldInfo> fields;
    for (const Field& field : kFields) {
        Orvel::Analytics::DataClass::DataClassFieldInfo& info = fields.emplace_back();
        info.id = Orvel::toWide(field.id);
        info.name = Orvel::toWide(field.name);
        info.type = Orvel::toWide(field.type);
        info.nullable = Orvel::toWide(field.nullable);
    }
    return fields;
}

Orvel::WideString eventText(const LogEntry& entry) {
    nlohmann::ordered_json event;
    for (const Field& field : kFields) {
        const std::string& text = entry.*field.text;
        if (!text.empty()) {
            event[field.id] = text;
        }
    }
    try {
        return Orvel::toWide(event.dump());
    } catch (const nlohmann::json::exception&) {
        throw std::invalid_argument("it is not UTF-8 text");
    }
}

}  // namespace PackageHistory
