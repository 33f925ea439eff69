#ifndef ORVEL_SERVICE_LOG_H
#define ORVEL_SERVICE_LOG_H

#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "service/calendar.h"

namespace Orvel::Service {

/// The service's account of its own life: one line of JSON an event, with its time and name first.
/// A line that there is no memory for is left out.
///
/// Any thread.
class Log {
  public:
    /// Takes a whole line, its end included.
    using Sink = std::function<void(std::string_view line)>;
    using Detail = std::pair<std::string_view, std::string_view>;

    Log(Sink sink, Clock clock) : sink_(std::move(sink)), clock_(std::move(clock)) {}

    void write(std::string_view event, std::initializer_list<Detail> details = {});

  private:
    std::string lineOf(std::string_view event, std::initializer_list<Detail> details) const;

    std::mutex mutex_;
    Sink sink_;
    Clock clock_;
};

}  // namespace Orvel::Service

#endif
