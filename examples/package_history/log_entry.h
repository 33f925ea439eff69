#ifndef ORVEL_EXAMPLES_PACKAGE_HISTORY_LOG_ENTRY_H
#define ORVEL_EXAMPLES_PACKAGE_HISTORY_LOG_ENTRY_H

#include <cstdint>
#include <string>

/// @file
/// One line of the package manager's log.

namespace PackageHistory {

/// What one line says. A text that its kind of entry does not have is empty.
struct LogEntry {
    /// As the log writes it: `YYYY-MM-DD HH:MM:SS`, local time.
    std::string time;
    /// The same in seconds since 1970-01-01 00:00 UTC.
    std::int64_t seconds = 0;
    /// "install", "upgrade", "status", "startup", "conffile", …
    std::string action;
    std::string package;
    std::string architecture;
    /// The versions of an action on a package; "<none>" where the log says so.
    std::string oldVersion;
    std::string newVersion;
    /// The state that a "status" entry tells of, and the version that is in it.
    std::string state;
    std::string version;
    /// What a "startup" entry tells of, such as "archives unpack".
    std::string command;
    /// The file that a "conffile" entry tells of, and what was decided about it.
    std::string file;
    std::string decision;
};

/// Reads one line, without its line end.
/// @throws std::invalid_argument with the reason when it is no entry of the log.
LogEntry parseLogEntry(const std::string& line);

}  // namespace PackageHistory

#endif
