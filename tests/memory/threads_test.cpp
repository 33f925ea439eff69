/// Several sessions, each used by a thread of its own, run out of memory at the same time.

#include <algorithm>
#include <iostream>
#include <list>
#include <string>
#include <thread>
#include <vector>

#include "memory/memory_test.h"

namespace Orvel::TestSupport {
namespace {

using nlohmann::json;
using Result = SessionScene::Result;
using ThreadsWithoutMemory = MemoryTest;

/// One thread's session, and what became of its events.
class Sender {
  public:
    Sender(AnsweringService& service, int number)
        : scene_(service, 0, toWide("Application" + std::to_string(number))) {}

    void work() {
        constexpr int kRounds = 300;
        constexpr int kAllocations = 30;
        for (int round = 0; round < kRounds; ++round) {
            collect({{"n", round}, {"text", plainText(300)}}, round % kAllocations);
            send(round % kAllocations);
        }
        send(1'000'000);
    }

    /// What was acknowledged has arrived, and nothing has arrived twice or out of its turn.
    void judge() const {
        const std::vector<json> delivered = scene_.delivered();
        EXPECT_TRUE(std::includes(delivered.begin(), delivered.end(), acknowledged_.begin(),
                                  acknowledged_.end()));
        EXPECT_EQ(std::adjacent_find(delivered.begin(), delivered.end(), std::greater_equal<>()),
                  delivered.end());
        EXPECT_GT(acknowledged_.size(), 0u);
    }

    int failed = 0;
    int raised = 0;

  private:
    /// @return whether the operation was a success.
    template <typename Operate>
    bool runOut(long allocations, const Operate& operate) {
        Result result = Result::GenericError;
        Memory::failAfter(allocations, allocations % 2 == 0 ? Memory::Shortage::kMomentary
                                                            : Memory::Shortage::kLasting);
        try {
            result = operate();
        } catch (const std::bad_alloc&) {
            ++raised;
        }
        failed += Memory::relent() > 0 ? 1 : 0;
        return result == Result::Success;
    }

    void collect(const json& event, long allocations) {
        const WideString text = toWide(event.dump());
        if (runOut(allocations, [&] { return scene_.session.CollectEvent(&scene_.evt, text); })) {
            queued_.push_back(event);
        }
        EXPECT_EQ(scene_.queue(), queued_);
    }

    void send(long allocations) {
        if (runOut(allocations, [&] { return scene_.session.SendEvents(); })) {
            acknowledged_.insert(acknowledged_.end(), queued_.begin(), queued_.end());
        }
        const std::vector<json> left = scene_.queue();
        EXPECT_TRUE(left.empty() || left == queued_);
        queued_ = left;
    }

    SessionScene scene_;
    std::vector<json> queued_;
    std::vector<json> acknowledged_;
};

TEST_F(ThreadsWithoutMemory, SessionsOfOtherThreadsAreNoneTheWorse) {
    constexpr int kThreads = 4;
    std::list<Sender> senders;
    for (int number = 0; number < kThreads; ++number) {
        senders.emplace_back(service(), number);
    }
    std::vector<std::thread> threads;
    for (Sender& sender : senders) {
        threads.emplace_back([&sender] { sender.work(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    int failed = 0;
    int raised = 0;
    for (const Sender& sender : senders) {
        sender.judge();
        failed += sender.failed;
        raised += sender.raised;
    }
    printFault("CollectEvent and SendEvents in four threads", failed, raised);
}

}  // namespace
}  // namespace Orvel::TestSupport
