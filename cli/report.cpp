#include "cli/report.h"

#include <fmt/format.h>

#include <istream>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "cli/data_class_file.h"
#include "cli/event_time.h"
#include "cli/input_file.h"
#include "cli/line_reader.h"
#include "cli/progress_line.h"
#include "cli/report_summary.h"
#include "cli/result_names.h"
#include "cli/service_probe.h"
#include "orvel/analytics.h"

namespace Orvel::Tool {

namespace {

using Analytics::Emitters::AnalyticsResult;

constexpr std::size_t kLongestLine = std::size_t{16} << 20;

/// A line is judged without the service, and there a generic error has one meaning only.
Verdict verdictOnLine(AnalyticsResult result) {
    return result == AnalyticsResult::GenericError
               ? Verdict{result, "the value of an integer field is not a number of 32 bits"}
               : Verdict::of(result);
}

/// The events' file, or standard input.
class EventSource {
  public:
    EventSource(const ReportOptions& options, Console& console) : console_(console) {
        if (options.events != "-") {
            file_.emplace(options.events);
        }
    }

    std::streambuf& bytes() { return file_ ? *file_ : *console_.in.rdbuf(); }
    /// 0 when it is not known, and then no percentage is shown.
    [[nodiscard]] std::uint64_t size() const { return file_ ? file_->size() : 0; }

  private:
    Console& console_;
    std::optional<InputFile> file_;
};

/// One run, from the registration to the last batch.
class Reporter {
  public:
    Reporter(const ReportOptions& options, Console& console, ReportSummary& summary)
        : options_(options),
          console_(console),
          summary_(summary),
          dataClass_(readDataClassFile(options.dataClassFile)),
          session_(makeSession(options.session)),
          source_(options, console),
          progress_(console, source_.size()) {}

    void run() {
        requireService();
        registerDataClass();
        LineReader reader(source_.bytes(), kLongestLine);
        Line line;
        while (reader.next(line)) {
            ++summary_.lines;
            collect(line);
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
        const AnalyticsResult result = session_.RegisterDataClass(&dataClass_);
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
                printable(toUtf8(dataClass_.id)), printable(toUtf8(dataClass_.version)),
                dataClass_.fields.size());
        }
    }

    void collect(const Line& line) {
        try {
            if (line.tooLong) {
                return refuse(line, {{}, "the line is longer than 16 MiB"});
            }
            WideString event = toWide(line.text);
            dataClass_.dateTime = options_.timeMember.empty()
                                      ? console_.now()
                                      : readEventTime(line.text, options_.timeMember);
            const AnalyticsResult result = session_.CollectEvent(&dataClass_, std::move(event));
            if (result != AnalyticsResult::Success) {
                return refuse(line, verdictOnLine(result));
            }
            enqueue(line);
        } catch (const std::invalid_argument& error) {
            refuse(line, {{}, error.what()});
        } catch (const MalformedEvent& error) {
            refuse(line, {AnalyticsResult::MalformedJson, error.what()});
        } catch (const std::out_of_range& error) {
            refuse(line, {{},
                          fmt::format("the length in a field's varchar type is not within 32 "
                                      "bits ({})",
                                      error.what())});
        } catch (const Analytics::hresult_error& error) {
            refuse(line, {{}, error.what()});
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

    void refuse(const Line& line, const Verdict& verdict) {
        ++summary_.refused;
        tell(fmt::format("line {}: refused: {}", line.number, verdict.text()));
        if (summary_.refusedLines.size() < ReportSummary::kLongestList) {
            summary_.refusedLines.push_back({line.number, verdict});
        }
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
    FileDataClass dataClass_;
    AnalyticsSession session_;
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
