#include "service/gathering.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

namespace Orvel::Service {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

using Parts = std::vector<int*>;

TEST(GatheringTest, DoesALonePartAtOnce) {
    std::vector<int> done;
    Gathering<int> gathering([&done](const Parts& parts) {
        for (const int* part : parts) {
            done.push_back(*part);
        }
    });
    for (int part : {1, 2, 3}) {
        gathering.run(part);
        EXPECT_EQ(done.back(), part);
    }
    EXPECT_THAT(done, ElementsAre(1, 2, 3));
}

TEST(GatheringTest, DoesTogetherWhatComesWhileItIsAtWork) {
    std::latch begun(1);
    std::latch mayEnd(1);
    std::vector<std::vector<int>> turns;
    Gathering<int> gathering([&](const Parts& parts) {
        turns.emplace_back();
        for (int* part : parts) {
            turns.back().push_back(*part);
            *part = 0;
        }
        if (turns.size() == 1) {
            begun.count_down();
            mayEnd.wait();
        }
    });
    std::vector<int> parts = {1, 2, 3, 4};
    std::vector<std::jthread> threads;
    const auto come = [&](int& part) {
        threads.emplace_back([&gathering, &part] {
            gathering.run(part);
            EXPECT_EQ(part, 0) << "it was not done when it was said to be";
        });
    };
    come(parts[0]);
    begun.wait();
    for (std::size_t part = 1; part < parts.size(); ++part) {
        come(parts[part]);
    }
    while (gathering.waiting() < 3) {
        std::this_thread::yield();
    }
    EXPECT_THAT(parts, ElementsAre(0, 2, 3, 4)) << "what waits was done already";
    mayEnd.count_down();
    threads.clear();
    ASSERT_EQ(turns.size(), 2U);
    EXPECT_THAT(turns[0], ElementsAre(1));
    EXPECT_THAT(turns[1], UnorderedElementsAre(2, 3, 4));
}

TEST(GatheringTest, DoesEveryPartOnceHoweverManyThreadsCome) {
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kParts = 1000;
    std::vector<int> timesDone(kThreads * kParts, 0);
    // Whoever is at work is alone, so that this needs no lock.
    std::size_t total = 0;
    Gathering<int> gathering([&total](const Parts& parts) {
        for (int* part : parts) {
            ++*part;
            ++total;
        }
    });
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&, thread] {
                for (std::size_t part = 0; part < kParts; ++part) {
                    int& own = timesDone[thread * kParts + part];
                    gathering.run(own);
                    EXPECT_EQ(own, 1);
                }
            });
        }
    }
    EXPECT_EQ(total, timesDone.size());
    EXPECT_THAT(timesDone, testing::Each(1));
    EXPECT_EQ(gathering.waiting(), 0U);
}

}  // namespace
}  // namespace Orvel::Service
