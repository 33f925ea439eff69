#include "relay/client/waiter.h"

#include <thread>

namespace Orvel::Relay::Client {
namespace {

class SystemWaiter final : public Waiter {
  public:
    TimePoint now() override { return std::chrono::steady_clock::now(); }

    bool wait(Awaited& awaited, TimePoint until) override { return awaited.comesBefore(until); }

    void pauseUntil(TimePoint time) override { std::this_thread::sleep_until(time); }
};

}  // namespace

Waiter& systemWaiter() {
    static SystemWaiter waiter;
    return waiter;
}

}  // namespace Orvel::Relay::Client
