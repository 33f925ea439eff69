#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "relay/server/alarm.h"
#include "tests/memory/exhaustion.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/raw_client.h"
#include "tests/relay/running_server.h"
#include "tests/support/failing_memory.h"

/// Memory that runs out at any allocation of the server's threads.

namespace Orvel::Relay::Testing {
namespace {

namespace Memory = TestSupport::Memory;
using std::chrono::hours;

// A client of its own: what it was answered, or a status.
struct Outcome {
    std::int32_t status = 0;
    WideString reply;
};

Outcome converse(const RunningServer& server, const WideString& command) {
    const auto client = server.makeClient();
    Outcome outcome;
    outcome.status = client->OpenConnection({});
    if (outcome.status == Status::kSuccess) {
        outcome.status = client->ExecuteCommand(ORVEL_RELAY_TEXT("TA"), 0, command, outcome.reply);
    }
    return outcome;
}

TEST(ServerMemory, RunningOutEndsAConnectionAndNothingElse) {
    const WideString command(200'000, 'x');
    RunningServer server;
    ASSERT_EQ(converse(server, command).status, Status::kSuccess) << "it is running";
    int failed = 0;
    int lost = 0;
    for (const auto shortage : {Memory::Shortage::kMomentary, Memory::Shortage::kLasting}) {
        for (long n = 0, failures = 1; failures > 0; ++n) {
            SCOPED_TRACE(n);
            Memory::failElsewhereAfter(n, shortage);
            const Outcome outcome = converse(server, command);
            failures = Memory::relentElsewhere();
            if (outcome.status == Status::kSuccess) {
                EXPECT_EQ(outcome.reply, command);
            } else {
                EXPECT_EQ(outcome.status, Status::kConnectionLost);
                ++lost;
            }
            failed += failures > 0 ? 1 : 0;
            ASSERT_EQ(converse(server, command).status, Status::kSuccess) << "the next client";
        }
    }
    TestSupport::printFault("the relay's server", failed, lost);
}

// As many descriptors as there are, and one more.
class OneMoreDescriptor {
  public:
    OneMoreDescriptor() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
        ::close(next);
        rlimit limit = before_;
        limit.rlim_cur = static_cast<rlim_t>(next) + 1;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    OneMoreDescriptor(const OneMoreDescriptor&) = delete;
    OneMoreDescriptor& operator=(const OneMoreDescriptor&) = delete;
    ~OneMoreDescriptor() { ::setrlimit(RLIMIT_NOFILE, &before_); }

  private:
    rlimit before_{};
};

TEST(ServerMemory, RunningOutTogetherWithDescriptorsKeepsTheDoorWatched) {
    for (const long allocations : {0, 1}) {
        SCOPED_TRACE(allocations);
        RunningServer server;
        // It is running, and no connection ends meanwhile.
        const auto first = server.makeClient();
        ASSERT_EQ(first->OpenConnection({}), Status::kSuccess);
        std::optional<RawClient> client;
        {
            const OneMoreDescriptor taken;
            Memory::failElsewhereAfter(allocations, Memory::Shortage::kLasting);
            client.emplace(server.path());
            while (Memory::failedElsewhere() == 0) {
                std::this_thread::yield();
            }
        }
        Memory::relentElsewhere();
        client->send(helloFrame());
        EXPECT_EQ(client->receive(Wire::kHeaderSize).size(), Wire::kHeaderSize);
    }
}

class AlarmWithoutMemory : public testing::Test {
  protected:
    static constexpr auto kLasting = Memory::Shortage::kLasting;

    void setInVain(Server::Alarm::TimePoint time) {
        Memory::failAfter(0, kLasting);
        alarm.setFor(time);
        EXPECT_GT(Memory::relent(), 0);
    }

    const Server::Alarm::TimePoint past = Server::Alarm::Clock::now() - hours(1);
    asio::io_context io;
    int rung = 0;
    Server::Alarm alarm{io, [this] { ++rung; }};
};

TEST_F(AlarmWithoutMemory, RingsForWhoSetsItNext) {
    setInVain(past);
    io.run();
    EXPECT_EQ(rung, 0);
    io.restart();
    alarm.setFor(past + std::chrono::minutes(1));
    io.run();
    EXPECT_EQ(rung, 1);
}

TEST_F(AlarmWithoutMemory, RingsForWhoSetsItNextOnItsOwnThread) {
    asio::post(io, [this] {
        setInVain(past);
        alarm.setFor(past + std::chrono::minutes(1));
    });
    io.run();
    EXPECT_EQ(rung, 1);
}

}  // namespace
}  // namespace Orvel::Relay::Testing
