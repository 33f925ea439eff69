#ifndef ORVEL_CLIENT_WAITER_POSIX_H
#define ORVEL_CLIENT_WAITER_POSIX_H

#include "relay/client/deadlines.h"

/// @file
/// Time and waiting, so that tests can run an hour's deadline in no time.

namespace Orvel::Relay::Client {

class Waiter {
  public:
    virtual ~Waiter() = default;

    virtual TimePoint now() = 0;

    /// Waits for events of a descriptor.
    /// @param descriptor negative for a mere pause.
    /// @param events as for `poll`.
    /// @return the events as `poll` returns them; 0 when time ran out.
    virtual short wait(int descriptor, short events, TimePoint until) = 0;
};

/// The waiter that really waits. Signals that arrive meanwhile do not end a wait.
Waiter& systemWaiter();

}  // namespace Orvel::Relay::Client

#endif
