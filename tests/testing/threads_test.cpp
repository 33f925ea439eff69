/// Sessions of several threads at one service.

#include <string>
#include <thread>
#include <vector>

#include "testing/session_fixture.h"

namespace Orvel::Analytics::Testing {
namespace {

TEST(ServiceOfThreads, TakesEveryEventOnce) {
    constexpr int kThreads = 4;
    constexpr int kBatches = 25;
    Service service;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            AnalyticsSession session(ORVEL_TEXT("App") + toWide(std::to_string(thread)),
                                     ORVEL_TEXT("1"));
            TestSupport::TestDataClass dataClass({});
            for (int batch = 0; batch < kBatches; ++batch) {
                session.CollectEvent(&dataClass, ORVEL_TEXT("{\"a\":1}"));
                session.SendEvents();
            }
        });
    }
    for (int look = 0; look < kBatches; ++look) {
        static_cast<void>(service.events());
        static_cast<void>(service.connections());
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(service.events().size(), std::size_t{kThreads} * kBatches);
    EXPECT_EQ(service.connections(), std::size_t{kThreads} * kBatches);
    for (int thread = 0; thread < kThreads; ++thread) {
        int batches = 0;
        for (const Batch& batch : service.batches()) {
            batches += batch.application == "App" + std::to_string(thread) ? 1 : 0;
        }
        EXPECT_EQ(batches, kBatches);
    }
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
