#include "service/status_listing.h"

#include <fmt/format.h>

#include <string>

#include "service/calendar.h"
#include "service/json_object_text.h"
#include "service/visible_text.h"

namespace Orvel::Service {

namespace {

std::optional<std::string> timeText(std::optional<std::int64_t> milliseconds) {
    return milliseconds ? std::optional{utcText(*milliseconds)} : std::nullopt;
}

std::string removalText(const Removal& removal) {
    return fmt::format("{} events in {} batches, last {}", removal.events, removal.batches,
                       timeText(removal.last).value_or("never"));
}

std::string limitText(std::int64_t limit) {
    return limit == 0 ? "no limit" : fmt::format("of {}", limit);
}

std::string statusText(const StoreStatus& status, const Limits& limits) {
    std::string text;
    const auto add = [&text](std::string_view name, std::string_view value) {
        text += fmt::format("{:<20}  {}\n", name, value);
    };
    add("stored bytes", fmt::format("{}, {}", status.bytes, limitText(limits.storedBytes)));
    add("kept for days", limits.storedDays == 0 ? "no limit" : std::to_string(limits.storedDays));
    add("oldest received", timeText(status.oldest).value_or("-"));
    add("removed for age", removalText(status.forAge));
    add("removed for room", removalText(status.forRoom));
    for (const ApplicationCount& count : status.today) {
        add("events today", fmt::format("{}, {}: {}", count.events, limitText(limits.eventsPerDay),
                                        visibleText(count.application)));
    }
    return text;
}

std::string removalJson(const Removal& removal) {
    return JsonObjectText()
        .json("batches", std::to_string(removal.batches))
        .json("events", std::to_string(removal.events))
        .optionalText("last", timeText(removal.last))
        .finish();
}

std::string limitJson(std::int64_t limit) { return limit == 0 ? "null" : std::to_string(limit); }

std::string statusJson(const StoreStatus& status, const Limits& limits) {
    std::string applications;
    for (const ApplicationCount& count : status.today) {
        applications += applications.empty() ? "" : ",";
        applications += JsonObjectText()
                            .text("application", count.application)
                            .json("events", std::to_string(count.events))
                            .finish();
    }
    const std::string line = JsonObjectText()
                                 .json("stored_bytes", std::to_string(status.bytes))
                                 .json("stored_bytes_limit", limitJson(limits.storedBytes))
                                 .json("stored_days_limit", limitJson(limits.storedDays))
                                 .optionalText("oldest_received", timeText(status.oldest))
                                 .json("removed_for_age", removalJson(status.forAge))
                                 .json("removed_for_room", removalJson(status.forRoom))
                                 .json("events_per_day_limit", limitJson(limits.eventsPerDay))
                                 .json("events_today", "[" + applications + "]")
                                 .finish();
    return visibleText(line) + "\n";
}

}  // namespace

void showStatus(StoreReader& reader, const Limits& limits, std::chrono::milliseconds now,
                ListingForm form, const Output& output) {
    const StoreStatus status = reader.status(utcDay(now));
    output(form == ListingForm::kJson ? statusJson(status, limits) : statusText(status, limits));
}

}  // namespace Orvel::Service
