#ifndef ORVEL_BENCH_SUPPORT_RECORDS_H
#define ORVEL_BENCH_SUPPORT_RECORDS_H

#include <cstddef>
#include <list>

#include "orvel/analytics/text.h"

namespace Orvel::Bench {

/// A queue of so many records of `plainEvent`.
std::list<WideString> plainRecords(std::size_t count);

}  // namespace Orvel::Bench

#endif
