#ifndef ORVEL_CLI_REPORT_SUMMARY_H
#define ORVEL_CLI_REPORT_SUMMARY_H

#include <cstdint>
#include <string>
#include <vector>

#include "cli/failure.h"
#include "cli/refused_line.h"

/// @file
/// What came of a report.

namespace Orvel::Tool {

/// A batch that the service did not answer with success; it may have kept some of the events.
struct RefusedBatch {
    std::uint64_t firstLine = 0;
    std::uint64_t lastLine = 0;
    std::uint64_t events = 0;
    Verdict verdict;
};

/// What came of the lines of a file.
struct LineSummary {
    /// Memory must stay bounded whatever the input, so no more than this many refusals are listed.
    static constexpr std::size_t kLongestList = 10'000;

    /// Lines that are not blank.
    std::uint64_t lines = 0;
    /// Events that were accepted.
    std::uint64_t accepted = 0;
    /// Lines that were refused before they were sent.
    std::uint64_t refused = 0;
    std::vector<RefusedLine> refusedLines;
    ExitStatus status = ExitStatus::Success;
    /// Why the run broke off; empty when it did not.
    std::string error;

    /// Counts a refused line, and lists it while there is room.
    void refuse(RefusedLine line);
};

/// The counts of one report. Every line that is not blank is in exactly one of `accepted`,
/// `refused` and `unconfirmed`, unless the run broke off; what is accepted was in a batch that the
/// service answered with success.
struct ReportSummary : LineSummary {
    bool registered = false;
    /// Events in batches that the service answered with an error, or not at all.
    std::uint64_t unconfirmed = 0;
    std::uint64_t batches = 0;
    std::uint64_t batchesRefused = 0;
    std::vector<RefusedBatch> refusedBatches;
};

/// The summary for people: one sentence, without a line end.
[[nodiscard]] std::string summaryText(const ReportSummary& summary);
/// Of the lines alone.
[[nodiscard]] std::string lineSummaryText(const LineSummary& summary);

/// The summary for programs: one JSON object on one line, in ASCII.
[[nodiscard]] std::string summaryJson(const ReportSummary& summary);
/// Of the lines alone.
[[nodiscard]] std::string lineSummaryJson(const LineSummary& summary);

}  // namespace Orvel::Tool

#endif
