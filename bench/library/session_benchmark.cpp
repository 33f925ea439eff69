#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "bench/support/events.h"
#include "orvel/analytics/session.h"

// What a session does once or seldom. The RPC client answers at once, so that the time is the
// library's own.

namespace Orvel::Bench {
namespace {

using Analytics::Emitters::AnalyticsResult;

AnalyticsSession newSession() { return {ORVEL_TEXT("Benchmark"), ORVEL_TEXT("1.0")}; }

void construction(benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(newSession());
    }
}

void registration(benchmark::State& state) {
    AnalyticsSession session = newSession();
    PageView pageView;
    for ([[maybe_unused]] auto iteration : state) {
        if (session.RegisterDataClass(&pageView) != AnalyticsResult::Success) {
            state.SkipWithError("the data class was refused");
            break;
        }
    }
}

void consent(benchmark::State& state) {
    AnalyticsSession session = newSession();
    ConsentObject record;
    for ([[maybe_unused]] auto iteration : state) {
        if (session.GetConsent(&record) != AnalyticsResult::Success || !record.processData) {
            state.SkipWithError("the consent could not be read");
            break;
        }
    }
}

std::ptrdiff_t threadsOfThisProcess() {
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return std::distance(begin(threads), end(threads));
}

void threads(benchmark::State& state) {
    const std::ptrdiff_t before = threadsOfThisProcess();
    std::ptrdiff_t started = 0;
    for ([[maybe_unused]] auto iteration : state) {
        AnalyticsSession session = newSession();
        PageView pageView;
        ConsentObject record;
        const bool good =
            session.RegisterDataClass(&pageView) == AnalyticsResult::Success &&
            session.CollectEvent(&pageView, plainEvent()) == AnalyticsResult::Success &&
            session.SendEvents() == AnalyticsResult::Success &&
            session.GetConsent(&record) == AnalyticsResult::Success;
        if (!good) {
            state.SkipWithError("an operation failed");
            break;
        }
        started = std::max(started, threadsOfThisProcess() - before);
    }
    state.counters["figure"] = static_cast<double>(started);
}

BENCHMARK(construction)->Name("construction/case")->UseRealTime();
BENCHMARK(registration)->Name("registration/case")->UseRealTime();
BENCHMARK(consent)->Name("consent/case")->UseRealTime();
BENCHMARK(threads)->Name("threads/case")->Iterations(1);

}  // namespace
}  // namespace Orvel::Bench
