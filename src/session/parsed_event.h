#ifndef ORVEL_SESSION_PARSED_EVENT_H
#define ORVEL_SESSION_PARSED_EVENT_H

#include <optional>
#include <utility>

#include "json/json.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Session {

/// An event on its way into the queue: its text, and the object that validation parsed from it.
struct ParsedEvent {
    explicit ParsedEvent(WideString eventText) : text(std::move(eventText)) {}

    WideString text;
    Json::Document document;
    std::optional<Json::Object> values;
};

}  // namespace Orvel::Analytics::Session

#endif
