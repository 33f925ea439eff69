#ifndef ORVEL_RELAY_FAILING_ALLOCATIONS_H
#define ORVEL_RELAY_FAILING_ALLOCATIONS_H

/// @file
/// Replaces the program's `operator new` by one that can be told to fail.

namespace Orvel::Relay::Testing {

/// How many allocations still succeed before one fails; after that, and when negative, all do. For
/// programs of one thread.
extern int allocationsLeft;

}  // namespace Orvel::Relay::Testing

#endif
