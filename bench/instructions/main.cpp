#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/instructions/counted.h"
#include "bench/support/events.h"
#include "bench/support/records.h"

// What is counted instruction by instruction: one row, over as many events or records as the
// program prints.

namespace {

using Orvel::WideString;

constexpr std::size_t kEvents = 1000;
constexpr std::size_t kRecords = 10000;

std::size_t collect(const std::vector<WideString>& events) {
    AnalyticsSession session(ORVEL_TEXT("Benchmark"), ORVEL_TEXT("1.0"));
    Orvel::Bench::PageView pageView;
    // What a process does once only, such as finding its time zone, is none of an event's cost.
    session.CollectEvent(&pageView, events.front());
    if (!countedCollect(session, pageView, events)) {
        throw std::runtime_error("an event was refused");
    }
    return events.size();
}

std::size_t run(const std::string& row) {
    if (row == "collect_plain") {
        return collect({kEvents, Orvel::Bench::plainEvent()});
    }
    if (row == "collect_mixed") {
        return collect(Orvel::Bench::mixedEvents(kEvents));
    }
    if (row == "batch") {
        if (countedBatch(Orvel::Bench::plainRecords(kRecords)).empty()) {
            throw std::runtime_error("the batch is empty");
        }
        return kRecords;
    }
    throw std::invalid_argument("rows: collect_plain, collect_mixed, batch");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        std::printf("%zu\n", run(argc == 2 ? argv[1] : ""));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvel-bench-instructions: %s\n", error.what());
        return 2;
    }
}
