#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

#include "bench/support/events.h"
#include "orvel/analytics/session.h"

// What an event costs when so many are queued already.

namespace Orvel::Bench {
namespace {

using Analytics::Emitters::AnalyticsResult;

// Short queues are measured some at a time, so that the clock's own cost does not show, and few
// enough that they stay in the processor's cache, as a session that is in use does.
constexpr std::int64_t kMeasured = 2000;
constexpr std::int64_t kMostSessions = 64;

bool collect(AnalyticsSession& session, PageView& pageView, std::int64_t count) {
    bool good = true;
    for (std::int64_t collected = 0; collected < count; ++collected) {
        good = session.CollectEvent(&pageView, plainEvent()) == AnalyticsResult::Success && good;
    }
    return good;
}

void collectBehind(benchmark::State& state) {
    const std::int64_t queued = state.range(0);
    // Never more than a tenth longer at the end than at the start.
    const std::int64_t each = std::clamp<std::int64_t>(queued / 10, 1, kMeasured);
    const std::int64_t count = std::min(kMostSessions, kMeasured / each);
    const AnalyticsSession fresh(ORVEL_TEXT("Benchmark"), ORVEL_TEXT("1.0"));
    PageView pageView;
    for ([[maybe_unused]] auto iteration : state) {
        std::vector<AnalyticsSession> sessions(static_cast<std::size_t>(count), fresh);
        bool good = true;
        for (AnalyticsSession& session : sessions) {
            good = collect(session, pageView, queued) && good;
        }
        const auto begin = std::chrono::steady_clock::now();
        for (AnalyticsSession& session : sessions) {
            good = collect(session, pageView, each) && good;
        }
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        if (!good) {
            state.SkipWithError("an event was refused");
            break;
        }
        state.SetIterationTime(taken.count() / static_cast<double>(count * each));
    }
}

BENCHMARK(collectBehind)->Name("queue_1/case")->Arg(1)->UseManualTime()->Iterations(20);
BENCHMARK(collectBehind)->Name("queue_100/case")->Arg(100)->UseManualTime()->Iterations(10);
BENCHMARK(collectBehind)->Name("queue_10000/case")->Arg(10000)->UseManualTime()->Iterations(10);
BENCHMARK(collectBehind)->Name("queue_1000000/case")->Arg(1000000)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace Orvel::Bench
