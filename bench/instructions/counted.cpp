#include "bench/instructions/counted.h"

#include "events/event_batch.h"

using Orvel::WideString;
using Orvel::Analytics::Emitters::AnalyticsResult;

bool countedCollect(AnalyticsSession& session, Orvel::Bench::PageView& pageView,
                    const std::vector<WideString>& events) {
    bool good = true;
    for (const WideString& event : events) {
        good = session.CollectEvent(&pageView, event) == AnalyticsResult::Success && good;
    }
    return good;
}

WideString countedBatch(const std::list<WideString>& records) {
    return Orvel::Analytics::Events::eventBatch({}, records);
}
