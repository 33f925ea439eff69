#include <benchmark/benchmark.h>

#include <cstddef>
#include <utility>

#include "bench/library/watched_memory.h"
#include "bench/support/events.h"
#include "bench/support/records.h"
#include "events/event_batch.h"
#include "orvel/analytics/session.h"

// How often and how much the library allocates.

namespace Orvel::Bench {
namespace {

using Analytics::Emitters::AnalyticsResult;

constexpr std::size_t kRecords = 100000;

AnalyticsSession newSession() { return {ORVEL_TEXT("Benchmark"), ORVEL_TEXT("1.0")}; }

void allocationsOfAnEvent(benchmark::State& state) {
    AnalyticsSession session = newSession();
    PageView pageView;
    for ([[maybe_unused]] auto iteration : state) {
        WideString event = plainEvent();
        WatchedMemory::reset();
        static_cast<void>(pageView.getFields());
        const std::size_t ofFields = WatchedMemory::allocations();
        if (session.CollectEvent(&pageView, std::move(event)) != AnalyticsResult::Success) {
            state.SkipWithError("the event was refused");
            break;
        }
        // The application's list of fields is made once more for the event.
        state.counters["figure"] = static_cast<double>(WatchedMemory::allocations() - 2 * ofFields);
    }
}

void memoryOfABatch(benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
        AnalyticsSession session = newSession();
        PageView pageView;
        for (std::size_t collected = 0; collected < kRecords; ++collected) {
            session.CollectEvent(&pageView, plainEvent());
        }
        WatchedMemory::reset();
        if (session.SendEvents() != AnalyticsResult::Success) {
            state.SkipWithError("the events were not sent");
            break;
        }
        state.counters["figure"] = static_cast<double>(WatchedMemory::peak());
    }
}

void sizeOfTheDocument(benchmark::State& state) {
    for ([[maybe_unused]] auto iteration : state) {
        const WideString document = Analytics::Events::eventBatch({}, plainRecords(kRecords));
        state.counters["figure"] = static_cast<double>(document.size() * sizeof(WideChar));
    }
}

BENCHMARK(allocationsOfAnEvent)->Name("allocations/case")->Iterations(1);
BENCHMARK(memoryOfABatch)->Name("batch_memory/case")->Iterations(1);
BENCHMARK(sizeOfTheDocument)->Name("batch_memory/floor")->Iterations(1);

}  // namespace
}  // namespace Orvel::Bench
