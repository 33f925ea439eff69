#ifndef ORVEL_CLIENT_WAITER_H
#define ORVEL_CLIENT_WAITER_H

#include "relay/client/deadlines.h"

/// @file
/// Time and waiting, so that tests can run an hour's deadline in no time.

namespace Orvel::Relay::Client {

/// Something of the system's that may come.
class Awaited {
  public:
    virtual ~Awaited() = default;

    /// Waits for it, in real time; a time that is over makes it a mere look.
    /// @return whether it has come. A wait that the system cannot make is one that brings nothing.
    virtual bool comesBefore(TimePoint until) = 0;
};

class Waiter {
  public:
    virtual ~Waiter() = default;

    virtual TimePoint now() = 0;

    /// @return whether it has come; false when time ran out.
    virtual bool wait(Awaited& awaited, TimePoint until) = 0;

    virtual void pauseUntil(TimePoint time) = 0;
};

/// The waiter that really waits.
Waiter& systemWaiter();

}  // namespace Orvel::Relay::Client

#endif
