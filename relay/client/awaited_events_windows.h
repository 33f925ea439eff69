#ifndef ORVEL_CLIENT_AWAITED_EVENTS_WINDOWS_H
#define ORVEL_CLIENT_AWAITED_EVENTS_WINDOWS_H

#include <array>
#include <span>

#include "relay/client/handle_windows.h"
#include "relay/client/waiter.h"

namespace Orvel::Relay::Client {

/// Any of some events. A wait for them calls none of the asynchronous procedures that the host has
/// queued to the thread.
class AwaitedEvents final : public Awaited {
  public:
    /// @param events at least one; they outlive this object, as does what lists them.
    explicit AwaitedEvents(std::span<const HANDLE> events) : events_(events) {}

    bool comesBefore(TimePoint until) override;

  private:
    std::span<const HANDLE> events_;
};

}  // namespace Orvel::Relay::Client

#endif
