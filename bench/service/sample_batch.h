#ifndef ORVEL_BENCH_SERVICE_SAMPLE_BATCH_H
#define ORVEL_BENCH_SERVICE_SAMPLE_BATCH_H

#include <cstddef>
#include <string>
#include <vector>

#include "orvel/analytics/app_session.h"
#include "orvel/analytics/text.h"

namespace Orvel::Bench {

inline constexpr std::size_t kEventsOfABatch = 1000;

/// What one application says to the service, worded as the library words it.
struct SampleCommands {
    SampleCommands();

    WideString handshake;
    WideString acknowledgement;
    WideString registration;
    /// Reports a batch of the plain events.
    WideString collection;
    WideString success;
};

/// What is stored of that batch.
struct SampleRows {
    SampleRows();

    Analytics::Session::AppSession session;
    /// Each event's values, in UTF-8.
    std::vector<std::string> contents;
    std::string version;
    /// So long is an event's time and the session's start.
    std::string time;
};

}  // namespace Orvel::Bench

#endif
