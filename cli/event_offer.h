#ifndef ORVEL_CLI_EVENT_OFFER_H
#define ORVEL_CLI_EVENT_OFFER_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cli/data_class_file.h"
#include "cli/line_reader.h"
#include "cli/refused_line.h"
#include "orvel/analytics/session.h"

/// @file
/// Lines of a file as events of a session.

namespace Orvel::Tool {

/// The longest line that is taken for an event, in bytes.
inline constexpr std::size_t kLongestEvent = std::size_t{16} << 20;

/// How a line becomes an event.
struct EventForm {
    /// The member of an event that holds its time; empty for the time of collection.
    std::string timeMember;
    /// The current time, in seconds since 1970-01-01 00:00 UTC.
    std::function<std::int64_t()> now;
};

/// Offers lines to a session, and finds out why one was refused.
class EventOffer {
  public:
    /// @param dataClass the events' data class.
    /// @param empty a session without events. It is copied, and what is found out is found out with
    ///     copies of it, so that nothing of that is ever sent.
    EventOffer(FileDataClass dataClass, EventForm form, const AnalyticsSession& empty);

    /// Offers a line to a session.
    /// @return why it was refused; nothing when the session has queued it.
    std::optional<RefusedLine> offer(const Line& line, AnalyticsSession& session);

    FileDataClass& dataClass() { return dataClass_; }
    /// A copy of the session without events.
    [[nodiscard]] AnalyticsSession emptySession() const { return empty_; }

  private:
    std::optional<Verdict> collect(WideString event, AnalyticsSession& session);
    [[nodiscard]] bool isRefused(const std::string& event, std::size_t fields) const;
    void nameField(const std::string& event, RefusedLine& refused) const;
    static void namePlace(const std::string& event, RefusedLine& refused);

    FileDataClass dataClass_;
    EventForm form_;
    AnalyticsSession empty_;
};

}  // namespace Orvel::Tool

#endif
