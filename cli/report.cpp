#include "cli/report.h"

#include <fmt/format.h>

#include <ostream>
#include <utility>

#include "cli/data_class_file.h"
#include "cli/event_offer.h"
#include "cli/event_source.h"
#include "cli/line_reader.h"
#include "cli/progress_line.h"
#include "cli/report_summary.h"
#include "cli/result_names.h"
#include "cli/service_probe.h"
#include "orvel/analytics.h"

namespace Orvel::Tool {

namespace {

using Analytics::Emitters::AnalyticsResult;

/// One run, from the registration to the last batch.
class Reporter {
  public:
    Reporter(const ReportOptions& options, Console& console, ReportSummary& summary)
        : options_(options),
          console_(console),
          summary_(summary),
          session_(makeSession(options.session)),
          offer_(readDataClassFile(options.dataClassFile), {options.timeMember, console.now},
                 session_),
          source_(options.events, console),
          progress_(console, source_.size()) {}

    void run() {
        requireService();
        registerDataClass();
        LineReader reader(source_.bytes(), kLongestEvent);
        Line line;
        while (reader.next(line)) {
            ++summary_.lines;
            if (const auto refused = offer_.offer(line, session_)) {
                refuse(*refused);
            } else {
                enqueue(line);
            }
            if (pending_.events == options_.batch || pendingBytes_ >= options_.batchBytes) {
                send();
            }
            progress_.show(reader.bytes(), summary_.lines);
        }
        if (pending_.events > 0) {
            send();
        }
        if (!reader.error().empty()) {
            throw Failure(ExitStatus::Failed, fmt::format("{}: reading broke off: {}",
                                                          options_.events, reader.error()));
        }
    }

  private:
    void registerDataClass() {
        FileDataClass& dataClass = offer_.dataClass();
        const AnalyticsResult result = session_.RegisterDataClass(&dataClass);
        if (result == AnalyticsResult::ServiceUnavailable ||
            result == AnalyticsResult::AccessDenied) {
            throw Failure(ExitStatus::Unreachable, describeResult(result));
        }
        if (result != AnalyticsResult::Success) {
            throw Failure(ExitStatus::Refused,
                          fmt::format("{}: the registration was refused: {}",
                                      options_.dataClassFile, describeResult(result)));
        }
        summary_.registered = true;
        if (!options_.json) {
            console_.out << fmt::format(
                "registered data class \"{}\", version \"{}\", with {} fields\n",
                printable(toUtf8(dataClass.id)), printable(toUtf8(dataClass.version)),
                dataClass.fields.size());
        }
    }

    void enqueue(const Line& line) {
        if (pending_.events == 0) {
            pending_.firstLine = line.number;
        }
        pending_.lastLine = line.number;
        ++pending_.events;
        pendingBytes_ += line.text.size();
    }

    void refuse(const RefusedLine& line) {
        tell(fmt::format("line {}: refused: {}", line.line, line.text()));
        summary_.refuse(line);
    }

    void send() {
        RefusedBatch batch = std::exchange(pending_, {});
        pendingBytes_ = 0;
        ++summary_.batches;
        try {
            const AnalyticsResult result = session_.SendEvents();
            if (result == AnalyticsResult::Success) {
                summary_.accepted += batch.events;
                return;
            }
            batch.verdict = Verdict::of(result);
        } catch (const Analytics::hresult_error& error) {
            batch.verdict = {{},
                             fmt::format("the service's reply cannot be read: {}", error.what())};
        }
        refuse(std::move(batch));
    }

    void refuse(RefusedBatch batch) {
        ++summary_.batchesRefused;
        summary_.unconfirmed += batch.events;
        const bool mayBeGone = batch.verdict.result == AnalyticsResult::GenericError;
        tell(fmt::format("lines {} to {}: the batch of {} events was not accepted as a whole: {}",
                         batch.firstLine, batch.lastLine, batch.events, batch.verdict.text()));
        if (summary_.refusedBatches.size() < ReportSummary::kLongestList) {
            summary_.refusedBatches.push_back(std::move(batch));
        }
        if (mayBeGone) {
            requireService();
        }
    }

    void tell(const std::string& message) {
        progress_.clear();
        console_.err << printable(options_.events) << ": " << printable(message) << '\n';
    }

    const ReportOptions& options_;
    Console& console_;
    ReportSummary& summary_;
    AnalyticsSession session_;
    EventOffer offer_;
    EventSource source_;
    ProgressLine progress_;
    RefusedBatch pending_;
    std::size_t pendingBytes_ = 0;
};

void runReporter(const ReportOptions& options, Console& console, ReportSummary& summary) {
    try {
        Reporter(options, console, summary).run();
        const bool complete = summary.refused == 0 && summary.unconfirmed == 0;
        summary.status = complete ? ExitStatus::Success : ExitStatus::Refused;
    } catch (const Failure& failure) {
        summary.status = failure.status();
        summary.error = failure.what();
    } catch (const Analytics::hresult_error& error) {
        summary.status = ExitStatus::Failed;
        summary.error = fmt::format("the service's reply cannot be read: {}", error.what());
    }
}

}  // namespace

ExitStatus report(const ReportOptions& options, Console& console) {
    ReportSummary summary;
    runReporter(options, console, summary);
    if (!summary.error.empty()) {
        console.err << "orvel-analytics: " << printable(summary.error) << '\n';
    }
    if (options.json) {
        console.out << summaryJson(summary) << '\n';
    } else if (summary.registered) {
        console.out << summaryText(summary) << '\n';
    }
    flushOutput(console);
    return summary.status;
}

}  // namespace Orvel::Tool
