#include "cli/check.h"

#include <fmt/format.h>

#include <ostream>

#include "cli/data_class_file.h"
#include "cli/event_offer.h"
#include "cli/event_source.h"
#include "cli/line_reader.h"
#include "cli/progress_line.h"
#include "cli/report_summary.h"
#include "cli/tool_session.h"

namespace Orvel::Tool {

namespace {

void checkLines(const CheckOptions& options, Console& console, LineSummary& summary) {
    EventOffer offer(readDataClassFile(options.dataClassFile), {options.timeMember, console.now},
                     makeSession({"orvel-analytics", "check", {}}));
    EventSource source(options.events, console);
    ProgressLine progress(console, source.size());
    LineReader reader(source.bytes(), kLongestEvent);
    Line line;
    while (reader.next(line)) {
        ++summary.lines;
        // What a session has queued it keeps, so each line has a session of its own.
        AnalyticsSession session = offer.emptySession();
        if (const auto refused = offer.offer(line, session)) {
            progress.clear();
            console.err << printable(options.events)
                        << fmt::format(": line {}: refused: ", line.number)
                        << printable(refused->text()) << '\n';
            summary.refuse(*refused);
        } else {
            ++summary.accepted;
        }
        progress.show(reader.bytes(), summary.lines);
    }
    if (!reader.error().empty()) {
        throw Failure(ExitStatus::Failed,
                      fmt::format("{}: reading broke off: {}", options.events, reader.error()));
    }
    summary.status = summary.refused == 0 ? ExitStatus::Success : ExitStatus::Refused;
}

}  // namespace

ExitStatus check(const CheckOptions& options, Console& console) {
    LineSummary summary;
    try {
        checkLines(options, console, summary);
    } catch (const Failure& failure) {
        summary.status = failure.status();
        summary.error = failure.what();
        console.err << "orvel-analytics: " << printable(summary.error) << '\n';
    }
    if (options.json) {
        console.out << lineSummaryJson(summary) << '\n';
    } else if (summary.status == ExitStatus::Success || summary.status == ExitStatus::Refused) {
        console.out << lineSummaryText(summary) << '\n';
    }
    flushOutput(console);
    return summary.status;
}

}  // namespace Orvel::Tool
