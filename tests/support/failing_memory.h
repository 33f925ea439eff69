#ifndef ORVEL_SUPPORT_FAILING_MEMORY_H
#define ORVEL_SUPPORT_FAILING_MEMORY_H

/// @file
/// Memory that runs out when a test says so. A program that is linked with it has its allocations
/// replaced: `malloc` and its kin, so that those of C libraries fail as well, or, where a sanitizer
/// needs these for itself, the forms of `operator new`.

namespace Orvel::TestSupport::Memory {

/// How memory runs out: for one allocation, or for all that follow, too.
enum class Shortage { kMomentary, kLasting };

/// Lets the calling thread make so many more allocations before memory runs out for it.
void failAfter(long allocations, Shortage shortage);

/// Ends that.
/// @return how many allocations have failed.
long relent();

/// The same for all other threads together; the calling one is spared from now on.
void failElsewhereAfter(long allocations, Shortage shortage);
long relentElsewhere();

/// How many allocations have failed there so far.
long failedElsewhere();

/// How many blocks the calling thread has allocated and not freed.
long held();

/// Of those who replace the allocations: whether this one is to fail.
bool allocationFails() noexcept;
void allocated() noexcept;
void freed() noexcept;

}  // namespace Orvel::TestSupport::Memory

#endif
