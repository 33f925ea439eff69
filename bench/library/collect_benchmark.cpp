#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "bench/support/events.h"
#include "bench/support/json_pass.h"
#include "orvel/analytics/session.h"

// Collecting an event, against one pass of the JSON engine over its text.

namespace Orvel::Bench {
namespace {

using Analytics::Emitters::AnalyticsResult;

// Few enough that the queue's memory is the same from one round to the next.
constexpr std::size_t kQueued = 1024;

AnalyticsSession newSession() { return {ORVEL_TEXT("Benchmark"), ORVEL_TEXT("1.0")}; }

void collect(benchmark::State& state, const std::vector<WideString>& events) {
    const AnalyticsSession fresh = newSession();
    AnalyticsSession session = fresh;
    PageView pageView;
    std::size_t collected = 0;
    for ([[maybe_unused]] auto iteration : state) {
        const WideString& event = events[collected++ % events.size()];
        if (session.CollectEvent(&pageView, event) != AnalyticsResult::Success) {
            state.SkipWithError("an event was refused");
            break;
        }
        if (collected % kQueued == 0) {
            state.PauseTiming();
            session = fresh;
            state.ResumeTiming();
        }
    }
}

void pass(benchmark::State& state, const std::vector<WideString>& events) {
    std::size_t longest = 0;
    for (const WideString& event : events) {
        longest = std::max(longest, event.size());
    }
    JsonPass engine(longest);
    std::size_t passed = 0;
    for ([[maybe_unused]] auto iteration : state) {
        const WideStringView written = engine.run(events[passed++ % events.size()]);
        benchmark::DoNotOptimize(written.data());
        if (written.empty()) {
            state.SkipWithError("the engine refused an event");
            break;
        }
    }
}

std::vector<WideString> plainEvents() { return {plainEvent()}; }

std::vector<WideString> manyMixedEvents() { return mixedEvents(kQueued); }

void fieldsOfDataClass(benchmark::State& state) {
    PageView pageView;
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(pageView.getFields());
    }
}

BENCHMARK_CAPTURE(collect, plain, plainEvents())->Name("collect_plain/case")->UseRealTime();
BENCHMARK_CAPTURE(pass, plain, plainEvents())->Name("collect_plain/floor")->UseRealTime();
BENCHMARK_CAPTURE(collect, mixed, manyMixedEvents())->Name("collect_mixed/case")->UseRealTime();
BENCHMARK_CAPTURE(pass, mixed, manyMixedEvents())->Name("collect_mixed/floor")->UseRealTime();
BENCHMARK(fieldsOfDataClass)->Name("collect_fields/case")->UseRealTime();

}  // namespace
}  // namespace Orvel::Bench
