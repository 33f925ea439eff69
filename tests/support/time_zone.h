#ifndef ORVEL_SUPPORT_TIME_ZONE_H
#define ORVEL_SUPPORT_TIME_ZONE_H

#include <cstdlib>
#include <optional>
#include <string>

namespace Orvel::TestSupport {

/// Sets the process's time zone for as long as it lives. It does not tell the C library: whoever
/// converts a time must.
class TimeZone {
  public:
    explicit TimeZone(const char* zone) {
        if (const char* const before = std::getenv("TZ")) {
            before_ = before;
        }
        setenv("TZ", zone, 1);
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (before_) {
            setenv("TZ", before_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
    }

  private:
    std::optional<std::string> before_;
};

}  // namespace Orvel::TestSupport

#endif
