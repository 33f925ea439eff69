#include "relay/server/watchdog.h"

#include <asio/io_context.hpp>
#include <gtest/gtest.h>

namespace Orvel::Relay::Server {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using Clock = Watchdog::Clock;

class WatchdogTest : public testing::Test {
  protected:
    asio::io_context io;
    int expired = 0;
    std::shared_ptr<Watchdog> watchdog =
        std::make_shared<Watchdog>(io.get_executor(), [this] { ++expired; });
};

TEST_F(WatchdogTest, CallsBackOnceWhenItsDeadlineHasPassed) {
    watchdog->watch(Clock::now() - hours(1));
    io.run();
    EXPECT_EQ(expired, 1);
}

TEST_F(WatchdogTest, ADeadlineThatWasMovedAwayDoesNotPass) {
    watchdog->watch(Clock::now() + milliseconds(1));
    watchdog->watch(Clock::now() + hours(1));
    // The timer fires for the first deadline, and finds the second.
    EXPECT_EQ(io.run_one(), 1u);
    EXPECT_EQ(expired, 0);
    // It now waits for that.
    EXPECT_EQ(io.poll(), 0u);
    EXPECT_FALSE(io.stopped());
}

TEST_F(WatchdogTest, ADeadlineThatWasMovedNearerPassesThen) {
    watchdog->watch(Clock::now() + hours(1));
    watchdog->watch(Clock::now() - hours(1));
    io.run();
    EXPECT_EQ(expired, 1);
}

TEST_F(WatchdogTest, NothingPassesWhileItRests) {
    watchdog->watch(Clock::now() + milliseconds(1));
    watchdog->rest();
    io.run();
    EXPECT_EQ(expired, 0);
    io.restart();
    watchdog->watch(Clock::now() - hours(1));
    io.run();
    EXPECT_EQ(expired, 1);
}

TEST_F(WatchdogTest, CallsBackNoMoreOnceItIsRetired) {
    watchdog->watch(Clock::now() - hours(1));
    watchdog->retire();
    io.run();
    EXPECT_EQ(expired, 0);
}

}  // namespace
}  // namespace Orvel::Relay::Server
