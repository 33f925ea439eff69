#include "cli/event_offer.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <utility>
#include <vector>

#include "cli/event_time.h"
#include "cli/json_places.h"
#include "cli/result_names.h"
#include "orvel/analytics/hresult_error.h"

namespace Orvel::Tool {

namespace {

using Analytics::Emitters::AnalyticsResult;

/// The longest value that is shown, in bytes.
constexpr std::size_t kLongestValue = 100;

/// A line is judged without the service, and there a generic error has one meaning only.
Verdict verdictOnLine(AnalyticsResult result) {
    return result == AnalyticsResult::GenericError
               ? Verdict{result, "the value of an integer field is not a number of 32 bits"}
               : Verdict::of(result);
}

/// Cuts a text in UTF-8 between two characters.
std::string shortened(std::string_view text) {
    if (text.size() <= kLongestValue) {
        return std::string(text);
    }
    std::size_t size = kLongestValue;
    while (size > 0 && (static_cast<unsigned char>(text[size]) >> 6) == 2) {
        --size;
    }
    return std::string(text.substr(0, size)) + "...";
}

}  // namespace

EventOffer::EventOffer(FileDataClass dataClass, EventForm form, const AnalyticsSession& empty)
    : dataClass_(std::move(dataClass)), form_(std::move(form)), empty_(empty) {}

std::optional<RefusedLine> EventOffer::offer(const Line& line, AnalyticsSession& session) {
    RefusedLine refused{line.number, {}, {}, {}};
    if (line.tooLong) {
        refused.verdict.reason = "the line is longer than 16 MiB";
        return refused;
    }
    try {
        WideString event = toWide(line.text);
        dataClass_.dateTime =
            form_.timeMember.empty() ? form_.now() : readEventTime(line.text, form_.timeMember);
        const auto verdict = collect(std::move(event), session);
        if (!verdict) {
            return std::nullopt;
        }
        refused.verdict = *verdict;
        nameField(line.text, refused);
    } catch (const std::invalid_argument& error) {
        refused.verdict.reason = error.what();
    } catch (const MalformedEvent& error) {
        refused.verdict = {AnalyticsResult::MalformedJson, error.what()};
    }
    if (refused.verdict.result == AnalyticsResult::MalformedJson) {
        namePlace(line.text, refused);
    }
    return refused;
}

std::optional<Verdict> EventOffer::collect(WideString event, AnalyticsSession& session) {
    try {
        const AnalyticsResult result = session.CollectEvent(&dataClass_, std::move(event));
        return result == AnalyticsResult::Success ? std::nullopt
                                                  : std::optional(verdictOnLine(result));
    } catch (const std::out_of_range& error) {
        return Verdict{{},
                       fmt::format("the length in a field's varchar type is not within 32 bits "
                                   "({})",
                                   error.what())};
    } catch (const Analytics::hresult_error& error) {
        return Verdict{{}, error.what()};
    }
}

/// Whether the session would refuse the event if the data class had no more than its first fields.
bool EventOffer::isRefused(const std::string& event, std::size_t fields) const {
    FileDataClass beginning = dataClass_;
    beginning.fields.resize(fields);
    AnalyticsSession session = empty_;
    try {
        return session.CollectEvent(&beginning, toWide(event)) != AnalyticsResult::Success;
    } catch (const std::out_of_range&) {
        return true;
    } catch (const Analytics::hresult_error&) {
        return true;
    }
}

/// An event that is refused because of a field is refused from that field on, so the number of
/// fields that it passes is found by halving.
void EventOffer::nameField(const std::string& event, RefusedLine& refused) const {
    std::vector<std::size_t> counts(dataClass_.fields.size() + 1);
    std::iota(counts.begin(), counts.end(), std::size_t{0});
    const auto found = std::partition_point(counts.begin(), counts.end(), [&](std::size_t fields) {
        return !isRefused(event, fields);
    });
    if (found == counts.begin() || found == counts.end()) {
        return;  // It is refused whatever the fields are.
    }
    const auto& field =
        *std::next(dataClass_.fields.begin(), std::distance(counts.begin(), found) - 1);
    refused.field = FieldAtFault{toUtf8(field.id), toUtf8(field.type), {}};
    if (const auto value = findInJson(event, {refused.field->id}).value) {
        refused.field->value =
            shortened(std::string_view(event).substr(value->begin, value->end - value->begin));
        refused.column = columnOf(event, value->begin);
    }
}

/// Another parser's opinion of a text that the library does not take for an event. It has none when
/// the text is JSON, but no object or one without members.
void EventOffer::namePlace(const std::string& event, RefusedLine& refused) {
    if (const auto fault = faultOfJson(event)) {
        refused.verdict.reason = "not JSON: " + fault->reason;
        refused.column = columnOf(event, fault->byte);
    }
}

}  // namespace Orvel::Tool
