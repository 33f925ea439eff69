/// The application's process is as it was after every operation of the library, whatever became of
/// it, and no operation asks the system for what a guest should not have.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <iostream>
#include <thread>

#include "library/host_operations.h"
#include "library/host_state.h"
#include "library/watched_calls.h"
#include "support/fault_tally.h"
#include "support/service_process.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/server_process.h"

namespace Orvel::HostTests {
namespace {

using Support::FaultTally;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

volatile sig_atomic_t brokenPipes = 0;

/// An application with a handler, a locale, a variable and a blocked signal of its own.
class HostApplication : public testing::Test {
  protected:
    void SetUp() override {
        brokenPipes = 0;
        struct sigaction counting {};
        counting.sa_handler = [](int) { brokenPipes = brokenPipes + 1; };
        ::sigaction(SIGPIPE, &counting, nullptr);
        std::setlocale(LC_ALL, "C.UTF-8");
        ::setenv("ORVEL_TEST_OF_THE_HOST", "set", 1);
        sigset_t blocked;
        ::sigemptyset(&blocked);
        ::sigaddset(&blocked, SIGUSR2);
        ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    }

    void TearDown() override { EXPECT_EQ(brokenPipes, 0); }

    /// Whether the circumstance is what it should be.
    static bool hasItsEffect(const Circumstance& circumstance) {
        InCircumstance in(circumstance);
        Application application;
        in.begin();
        const auto result = application.session.RegisterDataClass(&application.dataClass);
        in.end();
        EXPECT_EQ(static_cast<int>(result), circumstance.result) << circumstance.name;
        return static_cast<int>(result) == circumstance.result;
    }
};

TEST_F(HostApplication, IsAsItWasAfterEveryOperationAndPrintsNothing) {
    FaultTally tally("host application");
    for (const Circumstance& circumstance : circumstances()) {
        for (const Operation& operation : operations()) {
            SCOPED_TRACE(operation.name + ", " + circumstance.name);
            InCircumstance in(circumstance);
            Application application;
            CapturedOutput output;
            const HostState before = hostState();
            in.begin();
            operation.run(application);
            in.end();
            const HostState after = hostState();
            EXPECT_THAT(output.finish(), IsEmpty());
            EXPECT_THAT(differences(before, after), IsEmpty());
            tally.injected(circumstance.name);
            tally.observed(circumstance.name, hasItsEffect(circumstance));
        }
    }
    tally.report();
}

TEST_F(HostApplication, SeesEveryChangeThatItShouldSee) {
    CapturedOutput output;
    const HostState before = hostState();
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    ::signal(SIGHUP, SIG_IGN);
    std::setlocale(LC_NUMERIC, "C");
    ::setenv("ORVEL_TEST_OF_THE_HOST", "changed", 1);
    std::array<int, 2> held{};
    ASSERT_EQ(::pipe2(held.data(), O_CLOEXEC), 0);
    std::thread thread([&] {
        char byte = 0;
        [[maybe_unused]] const auto count = ::read(held[0], &byte, 1);
    });
    const HostState after = hostState();
    ::close(held[1]);
    thread.join();
    ::close(held[0]);
    ::close(pipe[0]);
    ::close(pipe[1]);
    ::signal(SIGHUP, SIG_DFL);
    std::cerr << "to standard error\n";
    EXPECT_EQ(output.finish(), "to standard error\n");

    std::string all;
    for (const std::string& difference : differences(before, after)) {
        all += difference + '\n';
    }
    for (const char* part :
         {"descriptor ", "signal 1 was", "locale of C was", "=changed", "thread "}) {
        EXPECT_THAT(all, HasSubstr(part));
    }
}

TEST_F(HostApplication, IsAskedForNothingThatOutlivesAnOperation) {
    int operationsWatched = 0;
    int calls = 0;
    for (const Circumstance& circumstance : circumstances()) {
        for (const Operation& operation : operations()) {
            SCOPED_TRACE(operation.name + ", " + circumstance.name);
            InCircumstance in(circumstance);
            // Once unwatched: a sanitizer makes calls of its own when it meets a class first.
            auto application = std::make_unique<Application>();
            in.begin();
            operation.run(*application);
            in.end();
            const WatchedCalls watched = watchCalls(
                [&] {
                    application = std::make_unique<Application>();
                    in.begin();
                },
                [&] { operation.run(*application); });
            if (!watched.watched) {
                GTEST_SKIP() << "this process may not watch others (ptrace)";
            }
            EXPECT_THAT(watched.objections, IsEmpty());
            ++operationsWatched;
            calls += watched.calls;
        }
    }
    EXPECT_GT(calls, operationsWatched);
    std::cout << operationsWatched << " operations watched, " << calls << " calls\n";
}

TEST_F(HostApplication, WouldHearOfEveryCallThatItShouldHear) {
    const std::vector<std::function<void()>> bad = {
        [] { ::open("/dev/null", O_RDONLY); },     [] { ::write(-1, "x", 1); },
        [] { ::socket(AF_UNIX, SOCK_STREAM, 0); }, [] { ::send(-1, "x", 1, 0); },
        [] { ::signal(SIGHUP, SIG_IGN); },         [] { ::raise(SIGUSR1); },
        [] { ::_exit(::fork() == 0 ? 0 : 1); },
    };
    for (std::size_t at = 0; at < bad.size(); ++at) {
        const WatchedCalls watched = watchCalls([] {}, bad[at]);
        if (!watched.watched) {
            GTEST_SKIP() << "this process may not watch others (ptrace)";
        }
        EXPECT_THAT(watched.objections, Not(IsEmpty())) << at;
    }
}

/// What a descriptor leads to, such as "socket:[4711]".
std::string targetIn(const std::string& description) {
    return description.substr(0, description.find(','));
}

/// The targets of the descriptors that are in one state and not in another.
std::vector<std::string> openedBetween(const HostState& before, const HostState& now) {
    std::vector<std::string> targets;
    for (const auto& [name, value] : now) {
        if (name.starts_with("descriptor ") && !before.contains(name)) {
            targets.push_back(targetIn(value));
        }
    }
    return targets;
}

TEST_F(HostApplication, MayForkAndExecuteProgramsInTheMidstOfAnOperation) {
    std::array<int, 2> goOn{};
    ASSERT_EQ(::pipe2(goOn.data(), O_CLOEXEC), 0);
    const Support::TemporaryFolder folder;
    Relay::Testing::ServerProcess server(
        folder.path() / "OrvelAnalyticsRpcEndpoint.sock", ::geteuid(),
        [&](Relay::Testing::ServedConnection& connection) {
            connection.welcome();
            connection.receiveFrame();
            connection.send(Relay::Testing::replyFrame(1, ORVEL_TEXT("MyApp::ACK::")));
            connection.receiveFrame();
            connection.tell('!');
            char byte = 0;
            [[maybe_unused]] const auto count = ::read(goOn[0], &byte, 1);
            connection.send(Relay::Testing::replyFrame(2, ORVEL_TEXT("MyApp::SUCCESS::")));
        });
    ::setenv("ORVEL_RPC_DIRECTORY", folder.path().c_str(), 1);
    const int inheritable = ::dup(goOn[1]);
    Application application;
    const HostState before = hostState();
    const std::string inherited = targetIn(before.at("descriptor " + std::to_string(inheritable)));
    int result = -1;
    std::thread operating([&] { result = static_cast<int>(application.session.SendEvents()); });
    EXPECT_EQ(server.hear(), '!');

    const auto opened = openedBetween(before, hostState());
    const auto listing = Support::runProgram("/bin/ls", {"-l", "/proc/self/fd"});
    const pid_t copy = ::fork();
    if (copy == 0) {
        ::_exit(0);
    }
    ::waitpid(copy, nullptr, 0);
    EXPECT_EQ(::write(goOn[1], "!", 1), 1);
    operating.join();
    EXPECT_EQ(result, 0) << "the operation went on";

    EXPECT_EQ(opened.size(), 1U) << "the connection";
    for (const std::string& target : opened) {
        EXPECT_THAT(listing.out, Not(HasSubstr(target)));
    }
    EXPECT_THAT(listing.out, HasSubstr(inherited)) << "what is inherited shows";
    ::close(inheritable);
    ::close(goOn[0]);
    ::close(goOn[1]);
}

}  // namespace
}  // namespace Orvel::HostTests
