#ifndef ORVEL_CLI_REPORT_SUMMARY_H
#define ORVEL_CLI_REPORT_SUMMARY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/failure.h"
#include "orvel/analytics/result.h"

/// @file
/// What came of a report.

namespace Orvel::Tool {

/// Why something was refused.
struct Verdict {
    /// The result code, when there is one.
    std::optional<Analytics::Emitters::AnalyticsResult> result;
    /// The reason in words.
    std::string reason;

    /// The verdict that a result code says.
    [[nodiscard]] static Verdict of(Analytics::Emitters::AnalyticsResult result);
    /// "NAME (NUMBER): words", or the words alone.
    [[nodiscard]] std::string text() const;
};

/// A line that was refused before it was sent.
struct RefusedLine {
    std::uint64_t line = 0;
    Verdict verdict;
};

/// A batch that the service did not answer with success; it may have kept some of the events.
struct RefusedBatch {
    std::uint64_t firstLine = 0;
    std::uint64_t lastLine = 0;
    std::uint64_t events = 0;
    Verdict verdict;
};

/// The counts of one run. Every line that is not blank is in exactly one of `accepted`, `refused`
/// and `unconfirmed`, unless the run broke off.
struct ReportSummary {
    /// Memory must stay bounded whatever the input, so no more than this many refusals are listed.
    static constexpr std::size_t kLongestList = 10'000;

    bool registered = false;
    /// Lines that are not blank.
    std::uint64_t lines = 0;
    /// Events in batches that the service answered with success.
    std::uint64_t accepted = 0;
    /// Lines that were not sent.
    std::uint64_t refused = 0;
    /// Events in batches that the service answered with an error, or not at all.
    std::uint64_t unconfirmed = 0;
    std::uint64_t batches = 0;
    std::uint64_t batchesRefused = 0;
    std::vector<RefusedLine> refusedLines;
    std::vector<RefusedBatch> refusedBatches;
    ExitStatus status = ExitStatus::Success;
    /// Why the run broke off; empty when it did not.
    std::string error;
};

/// The summary for people: one sentence, without a line end.
[[nodiscard]] std::string summaryText(const ReportSummary& summary);

/// The summary for programs: one JSON object on one line, in ASCII.
[[nodiscard]] std::string summaryJson(const ReportSummary& summary);

}  // namespace Orvel::Tool

#endif
