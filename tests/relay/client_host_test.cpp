#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/scripted_server.h"

/// What the client leaves alone in the process that it lives in.

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

std::set<int> openDescriptors() {
    std::set<int> listed;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        listed.insert(std::stoi(entry.path().filename()));
    }
    // The listing held a descriptor of its own, which is closed by now.
    std::erase_if(listed, [](int descriptor) { return ::fcntl(descriptor, F_GETFD) < 0; });
    return listed;
}

TEST(ClientHost, OpensNothingThatAnExecutedProgramWouldInherit) {
    ScriptedServer server;
    server.welcome();
    const auto client = server.makeClient();
    const std::set<int> before = openDescriptors();
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    int opened = 0;
    for (const int descriptor : openDescriptors()) {
        if (!before.contains(descriptor)) {
            ++opened;
            EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        }
    }
    // The two ends of the connection.
    EXPECT_EQ(opened, 2);
}

TEST(ClientHost, LeavesNoDescriptorBehind) {
    ScriptedServer server;
    const std::set<int> before = openDescriptors();
    server.accept().receiveFrame().send("not a frame at all, but long enough to be one");
    server.close().welcome().receiveFrame().close();
    server.welcome().close();
    {
        const auto client = server.makeClient();
        EXPECT_EQ(client->OpenConnection(u""), Status::kProtocolError);
        EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
        WideString reply;
        EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"x", reply), Status::kConnectionLost);
        EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
    }
    server.closeNow();
    EXPECT_EQ(openDescriptors(), before);
}

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

TEST(ClientHost, KeepsTheHostsErrno) {
    constexpr int kHosts = 4242;
    ScriptedServer server;
    server.welcome();
    WideString reply;
    errno = kHosts;
    {
        const auto nobody = server.makeClient({server.folder().file("nothing.sock")});
        errno = kHosts;
        EXPECT_EQ(nobody->OpenConnection(u""), Status::kServerUnavailable);
        EXPECT_EQ(errno, kHosts);
        const auto client = server.makeClient();
        errno = kHosts;
        ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
        EXPECT_EQ(errno, kHosts);
        server.closeNow();
        errno = kHosts;
        EXPECT_EQ(client->ExecuteCommand(u"TA", 0, u"x", reply), Status::kConnectionLost);
        EXPECT_EQ(errno, kHosts);
        EXPECT_EQ(client->CloseConnection(), Status::kConnectionLost);
        EXPECT_EQ(errno, kHosts);
    }
}

TEST(SystemWaiter, IsNotDisturbedBySignals) {
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
    const short events = waiter.wait(pipe[0], POLLIN, waiter.now() + std::chrono::hours(1));
    disturber.join();
    EXPECT_EQ(events, POLLIN);
    EXPECT_GE(signalsSeen, 20);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST(SystemWaiter, ReturnsAtOnceWhenTheTimeIsOver) {
    Client::Waiter& waiter = Client::systemWaiter();
    EXPECT_EQ(waiter.wait(-1, 0, waiter.now() - std::chrono::hours(1)), 0);
    EXPECT_EQ(waiter.wait(-1, 0, waiter.now()), 0);
}

}  // namespace
}  // namespace Orvel::Relay::Testing
