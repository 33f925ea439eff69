/// Reports the history of the machine's packages: every entry of the package manager's log becomes
/// an event, stamped with the time of the entry.
///
///     package_history [LOG...]
///
/// Each LOG is read together with the older files that log rotation has put beside it. Without an
/// argument it is the machine's own log.

#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/package_history/log_entry.h"
#include "examples/package_history/log_event.h"
#include "examples/package_history/log_files.h"
#include "orvel/analytics.h"

namespace {

using Orvel::Analytics::Emitters::AnalyticsResult;

constexpr const char* kMachineLog = "/var/log/dpkg.log";
constexpr int kEventsPerBatch = 1000;

std::string number(AnalyticsResult result) {
    return std::to_string(static_cast<std::int32_t>(result));
}

/// Collects entries and sends them in batches; what cannot be reported is told and counted.
class Reporter {
  public:
    void start() {
        const AnalyticsResult result = session_.RegisterDataClass(&dataClass_);
        if (result == AnalyticsResult::ServiceUnavailable) {
            throw std::runtime_error("the analytics service is not running");
        }
        if (result != AnalyticsResult::Success) {
            throw std::runtime_error("the data class was refused: result " + number(result));
        }
        std::cout << "registered data class " << Orvel::toUtf8(dataClass_.id) << ", version "
                  << Orvel::toUtf8(dataClass_.version) << '\n';
    }

    void reportFile(const std::filesystem::path& file) {
        const std::uint64_t before = collected_;
        std::uint64_t lineNumber = 0;
        PackageHistory::forEachLine(file, [&](const std::string& line) {
            ++lineNumber;
            if (line.empty()) {
                return;
            }
            try {
                collect(PackageHistory::parseLogEntry(line));
            } catch (const std::invalid_argument& error) {
                problem(file.string() + ":" + std::to_string(lineNumber) +
                        ": this line cannot be reported: " + error.what());
            }
        });
        std::cout << "collected " << collected_ - before << " events from " << file.string()
                  << '\n';
    }

    /// @return whether everything was reported.
    bool finish() {
        if (queued_ > 0) {
            send();
        }
        std::cout << "sent " << sent_ << " events in " << batches_ << " batches\n";
        return problems_ == 0;
    }

    void problem(const std::string& message) {
        ++problems_;
        std::cerr << "package_history: " << message << '\n';
    }

  private:
    void collect(const PackageHistory::LogEntry& entry) {
        dataClass_.dateTime = entry.seconds;
        const AnalyticsResult result =
            session_.CollectEvent(&dataClass_, PackageHistory::eventText(entry));
        if (result != AnalyticsResult::Success) {
            throw std::invalid_argument("it was refused with result " + number(result));
        }
        ++collected_;
        if (++queued_ == kEventsPerBatch) {
            send();
        }
    }

    void send() {
        const AnalyticsResult result = session_.SendEvents();
        ++batches_;
        if (result == AnalyticsResult::Success) {
            sent_ += queued_;
        } else {
            problem("batch " + std::to_string(batches_) + " was refused with result " +
                    number(result));
        }
        queued_ = 0;
    }

    AnalyticsSession session_{ORVEL_TEXT("package-history"), ORVEL_TEXT("1.0")};
    PackageHistory::LogEntryClass dataClass_;
    std::uint64_t collected_ = 0;
    std::uint64_t queued_ = 0;
    std::uint64_t sent_ = 0;
    std::uint64_t batches_ = 0;
    std::uint64_t problems_ = 0;
};

bool reportLogs(const std::vector<std::string>& logs) {
    Reporter reporter;
    reporter.start();
    for (const std::string& log : logs) {
        const auto files = PackageHistory::findLogFiles(log);
        if (files.empty()) {
            reporter.problem(log + ": there is no such log");
        }
        for (const auto& file : files) {
            try {
                reporter.reportFile(file);
            } catch (const std::runtime_error& error) {
                reporter.problem(error.what());
            }
        }
    }
    return reporter.finish();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        std::vector<std::string> logs(argv + 1, argv + argc);
        if (logs.empty()) {
            logs.emplace_back(kMachineLog);
        }
        const bool complete = reportLogs(logs);
        return complete && std::cout.flush() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "package_history: " << error.what() << '\n';
        return 1;
    }
}
