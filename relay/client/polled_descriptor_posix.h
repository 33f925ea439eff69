#ifndef ORVEL_CLIENT_POLLED_DESCRIPTOR_POSIX_H
#define ORVEL_CLIENT_POLLED_DESCRIPTOR_POSIX_H

#include "relay/client/waiter.h"

namespace Orvel::Relay::Client {

/// Events of a descriptor. Signals that arrive meanwhile do not end a wait for them.
class PolledDescriptor final : public Awaited {
  public:
    /// @param events as for `poll`.
    PolledDescriptor(int descriptor, short events) : descriptor_(descriptor), wanted_(events) {}

    bool comesBefore(TimePoint until) override;

    /// What has come, as `poll` returns it.
    short events() const { return came_; }

  private:
    int descriptor_;
    short wanted_;
    short came_ = 0;
};

}  // namespace Orvel::Relay::Client

#endif
