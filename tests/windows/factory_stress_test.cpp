/// Threads that use the factories while others release them, as it comes.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "json/json.h"
#include "json/windows/factory.h"
#include "windows/runtime_fixture.h"

namespace {

using Orvel::Analytics::Json::Document;
using Orvel::Analytics::Json::releaseFactories;

/// Has no say about what is left: a factory that was in use when its slot was filled anew is given
/// up for lost.
class FactoryStress : public Orvel::TestSupport::OnStandIn {
  protected:
    void TearDown() override { releaseFactories(); }
};

TEST_F(FactoryStress, NoFactoryIsUsedAfterItsRelease) {
    constexpr int kUsers = 4;
    constexpr std::size_t kReleases = 30;
    std::atomic<bool> isOver = false;
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (int user = 0; user < kUsers; ++user) {
        threads.emplace_back([&] {
            while (!isOver) {
                Document document;
                failures += document.newObject().size() == 0 ? 0 : 1;
                failures += document.parseObject(L"{\"a\":1}").size() == 1 ? 0 : 1;
            }
        });
    }
    // Every factory but the first was asked for because the one before had been released.
    while (runtime.factories("JsonObject").size() <= kReleases) {
        releaseFactories();
    }
    isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(runtime.usesAfterRelease(), 0U);
    EXPECT_EQ(runtime.liveObjects(), 0);
}

}  // namespace
