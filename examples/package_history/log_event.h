#ifndef ORVEL_EXAMPLES_PACKAGE_HISTORY_LOG_EVENT_H
#define ORVEL_EXAMPLES_PACKAGE_HISTORY_LOG_EVENT_H

#include <list>

#include "examples/package_history/log_entry.h"
#include "orvel/analytics.h"

/// @file
/// What the application reports: a data class of its own, and the event of an entry.

namespace PackageHistory {

/// The data class of log entries.
class LogEntryClass final : public Orvel::Analytics::DataClass::BaseDataClass {
  public:
    LogEntryClass();
    void reservedOperation() override {}
    std::list<Orvel::Analytics::DataClass::DataClassFieldInfo> getFields() override;
};

/// The text of an entry's event. Members that the entry does not have are left out.
/// @throws std::invalid_argument when the entry is not UTF-8 text.
Orvel::WideString eventText(const LogEntry& entry);

}  // namespace PackageHistory

#endif
