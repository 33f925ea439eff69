#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "orvel/relay/rpc_client.h"
#include "relay/client/polled_descriptor_posix.h"
#include "tests/relay/scripted_server.h"

/// Signals, and the process that the client lives in.

namespace Orvel::Relay::Testing {
namespace {

volatile sig_atomic_t signalsSeen = 0;

// Counts a signal for the length of a test. System calls are not restarted after it.
class CountedSignal {
  public:
    explicit CountedSignal(int signal) : signal_(signal) {
        signalsSeen = 0;
        struct sigaction counting {};
        counting.sa_handler = [](int) { signalsSeen = signalsSeen + 1; };
        ::sigaction(signal_, &counting, &before_);
    }
    CountedSignal(const CountedSignal&) = delete;
    CountedSignal& operator=(const CountedSignal&) = delete;
    ~CountedSignal() { ::sigaction(signal_, &before_, nullptr); }

  private:
    int signal_;
    struct sigaction before_ {};
};

TEST(ClientHost, RaisesNoSignalWhenTheServerHasGone) {
    const CountedSignal pipe(SIGPIPE);
    ScriptedServer server;
    server.welcome();
    const auto client = server.makeClient();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    server.closeNow();
    WideString reply;
    EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"x", reply), Status::kConnectionLost);
    EXPECT_EQ(signalsSeen, 0);
}

TEST(PolledDescriptor, IsNotDisturbedBySignals) {
    const CountedSignal user(SIGUSR1);
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const pthread_t waiting = ::pthread_self();
    std::thread disturber([&] {
        // Most of these find the other thread in its wait.
        while (signalsSeen < 20) {
            ::pthread_kill(waiting, SIGUSR1);
            std::this_thread::yield();
        }
        [[maybe_unused]] const auto written = ::write(pipe[1], "x", 1);
    });
    Client::Waiter& waiter = Client::systemWaiter();
    Client::PolledDescriptor polled(pipe[0], POLLIN);
    EXPECT_TRUE(waiter.wait(polled, waiter.now() + std::chrono::hours(1)));
    disturber.join();
    EXPECT_EQ(polled.events(), POLLIN);
    EXPECT_GE(signalsSeen, 20);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST(PolledDescriptor, IsOnlyLookedAtWhenTheTimeIsOver) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    Client::PolledDescriptor polled(pipe[0], POLLIN);
    const Client::TimePoint over = std::chrono::steady_clock::now() - std::chrono::hours(1);
    EXPECT_FALSE(polled.comesBefore(over));
    EXPECT_EQ(polled.events(), 0);
    ASSERT_EQ(::write(pipe[1], "x", 1), 1);
    EXPECT_TRUE(polled.comesBefore(over));
    EXPECT_EQ(polled.events(), POLLIN);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

}  // namespace
}  // namespace Orvel::Relay::Testing
