#ifndef WORD_COUNT_USAGE_REPORT_H
#define WORD_COUNT_USAGE_REPORT_H

#include <orvel/analytics.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace WordCount {

/// What became of a report.
enum class Delivery { Delivered, NotPermitted, Lost };

/// One file whose words were counted.
class CountedFile final : public Orvel::Analytics::DataClass::BaseDataClass {
  public:
    CountedFile();
    void reservedOperation() override {}
    std::list<Orvel::Analytics::DataClass::DataClassFieldInfo> getFields() override;
};

/// Reports how the program is used, if the user permits it: how many words files have, and of what
/// kind they are, but not what they are called.
class UsageReport {
  public:
    UsageReport();

    /// Adds a file.
    /// @param extension of the file's name.
    void add(const std::string& extension, std::int32_t words);

    /// Sends what was added since the last time, at most once. An application must not fail because
    /// nobody wants to know how it is used: this raises no error of the service.
    Delivery send();

  private:
    bool isPermitted();
    bool deliver();

    AnalyticsSession session_;
    CountedFile countedFile_;
    // Not with the session before its data class is registered: it stamps events with the version
    // of the one that was registered last.
    std::vector<Orvel::WideString> events_;
};

}  // namespace WordCount

#endif
