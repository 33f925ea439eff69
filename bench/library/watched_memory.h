#ifndef ORVEL_BENCH_LIBRARY_WATCHED_MEMORY_H
#define ORVEL_BENCH_LIBRARY_WATCHED_MEMORY_H

#include <cstddef>

/// Every allocation of this program through `operator new`, which is the library's only way to
/// memory on this platform.
namespace Orvel::Bench::WatchedMemory {

/// Begins to watch anew: nothing has been allocated, and what lives now counts as nothing.
void reset();

/// How often memory was allocated.
std::size_t allocations();

/// The most bytes that ever lived beyond those that lived at the beginning.
std::size_t peak();

}  // namespace Orvel::Bench::WatchedMemory

#endif
