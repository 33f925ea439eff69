#include "cli/report_summary.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <string_view>

#include "cli/json_words.h"
#include "cli/result_names.h"

namespace Orvel::Tool {

namespace {

using Json = nlohmann::ordered_json;

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

void addVerdict(Json& object, const Verdict& verdict) {
    if (verdict.result) {
        object["result"] = resultName(*verdict.result);
        object["code"] = static_cast<std::int32_t>(*verdict.result);
    } else {
        object["result"] = nullptr;
        object["code"] = nullptr;
    }
    object["reason"] = verdict.reason;
}

Json toJson(const RefusedLine& refused) {
    Json object{{"line", refused.line}};
    addVerdict(object, refused.verdict);
    object["field"] = refused.field ? Json(refused.field->id) : Json();
    object["type"] = refused.field ? Json(refused.field->type) : Json();
    object["value"] = refused.field ? Json(refused.field->value) : Json();
    object["column"] = refused.column ? Json(*refused.column) : Json();
    return object;
}

Json toJson(const RefusedBatch& refused) {
    Json object{{"first_line", refused.firstLine},
                {"last_line", refused.lastLine},
                {"events", refused.events}};
    addVerdict(object, refused.verdict);
    return object;
}

template <typename Entry>
Json toJson(const std::vector<Entry>& entries) {
    Json list = Json::array();
    for (const Entry& entry : entries) {
        list.push_back(toJson(entry));
    }
    return list;
}

}  // namespace

void LineSummary::refuse(RefusedLine line) {
    ++refused;
    if (refusedLines.size() < kLongestList) {
        refusedLines.push_back(std::move(line));
    }
}

std::string lineSummaryText(const LineSummary& summary) {
    return fmt::format("{}: {} accepted, {} refused", counted(summary.lines, "event", "events"),
                       summary.accepted, summary.refused);
}

std::string summaryText(const ReportSummary& summary) {
    std::string text = lineSummaryText(summary);
    if (summary.unconfirmed > 0) {
        text += fmt::format(", {} not confirmed", summary.unconfirmed);
    }
    text += "; " + counted(summary.batches, "batch", "batches") + " sent";
    if (summary.batchesRefused > 0) {
        text += fmt::format(", {} of them answered with an error", summary.batchesRefused);
    }
    return text;
}

std::string summaryJson(const ReportSummary& summary) {
    Json document{
        {"registered", summary.registered},
        {"lines", summary.lines},
        {"accepted", summary.accepted},
        {"refused", summary.refused},
        {"unconfirmed", summary.unconfirmed},
        {"batches", summary.batches},
        {"batches_refused", summary.batchesRefused},
        {"refused_lines", toJson(summary.refusedLines)},
        {"refused_lines_omitted", summary.refused - summary.refusedLines.size()},
        {"refused_batches", toJson(summary.refusedBatches)},
        {"refused_batches_omitted", summary.batchesRefused - summary.refusedBatches.size()},
        {"exit_status", static_cast<int>(summary.status)},
    };
    document["error"] = summary.error.empty() ? Json() : Json(summary.error);
    return jsonLine(document);
}

std::string lineSummaryJson(const LineSummary& summary) {
    Json document{
        {"lines", summary.lines},
        {"accepted", summary.accepted},
        {"refused", summary.refused},
        {"refused_lines", toJson(summary.refusedLines)},
        {"refused_lines_omitted", summary.refused - summary.refusedLines.size()},
        {"exit_status", static_cast<int>(summary.status)},
    };
    document["error"] = summary.error.empty() ? Json() : Json(summary.error);
    return jsonLine(document);
}

}  // namespace Orvel::Tool
