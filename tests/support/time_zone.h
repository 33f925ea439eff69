#ifndef ORVEL_SUPPORT_TIME_ZONE_H
#define ORVEL_SUPPORT_TIME_ZONE_H

#include <optional>
#include <string>

namespace Orvel::TestSupport {

/// Sets the process's time zone for as long as it lives.
class TimeZone {
  public:
    /// @param zone as the variable TZ has it. Every platform knows a name of three letters with an
    ///     offset in hours to the west: "UTC0", "XXX-3", "YYY5".
    explicit TimeZone(const char* zone);
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone();

  private:
    std::optional<std::string> before_;
};

}  // namespace Orvel::TestSupport

#endif
