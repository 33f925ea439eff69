#ifndef ORVEL_BENCH_INSTRUCTIONS_COUNTED_H
#define ORVEL_BENCH_INSTRUCTIONS_COUNTED_H

#include <list>
#include <vector>

#include "bench/support/events.h"
#include "orvel/analytics/session.h"

// A counter of instructions is told to count within these functions only, so that making what they
// work on does not count. They have a source of their own lest the compiler dissolve them.

/// @return whether every event was accepted.
bool countedCollect(AnalyticsSession& session, Orvel::Bench::PageView& pageView,
                    const std::vector<Orvel::WideString>& events);

/// @return the document of a batch.
Orvel::WideString countedBatch(const std::list<Orvel::WideString>& records);

#endif
