#include <benchmark/benchmark.h>

#include <algorithm>
#include <list>
#include <vector>

#include "bench/support/records.h"
#include "events/event_batch.h"
#include "orvel/analytics/app_session.h"

// The document of a batch, against copying the same bytes once.

namespace Orvel::Bench {
namespace {

std::list<WideString> queueOf(const benchmark::State& state) {
    return plainRecords(static_cast<std::size_t>(state.range(0)));
}

void document(benchmark::State& state) {
    const std::list<WideString> queue = queueOf(state);
    const Analytics::Session::AppSession session;
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(Analytics::Events::eventBatch(session, queue));
    }
}

void copy(benchmark::State& state) {
    const std::list<WideString> queue = queueOf(state);
    std::vector<WideChar> copied(queue.size() * queue.front().size());
    for ([[maybe_unused]] auto iteration : state) {
        WideChar* to = copied.data();
        for (const WideString& record : queue) {
            to = std::copy(record.begin(), record.end(), to);
        }
        benchmark::DoNotOptimize(copied.data());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(document)->Name("batch_10000/case")->Arg(10000)->UseRealTime();
BENCHMARK(copy)->Name("batch_10000/floor")->Arg(10000)->UseRealTime();
BENCHMARK(document)->Name("batch_1000000/case")->Arg(1000000)->UseRealTime();
BENCHMARK(copy)->Name("batch_1000000/floor")->Arg(1000000)->UseRealTime();

}  // namespace
}  // namespace Orvel::Bench
