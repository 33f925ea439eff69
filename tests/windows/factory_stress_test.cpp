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
    constexpr int kUses = 500;
    std::atomic<int> working = kUsers;
    std::atomic<int> made = 0;
    std::vector<std::thread> threads;
    for (int user = 0; user < kUsers; ++user) {
        threads.emplace_back([&] {
            for (int use = 0; use < kUses; ++use) {
                Document document;
                made += document.newObject().size() == 0 ? 1 : 0;
                made += document.parseObject(L"{\"a\":1}").size() == 1 ? 1 : 0;
            }
            --working;
        });
    }
    while (working != 0) {
        releaseFactories();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(made, 2 * kUsers * kUses);
    EXPECT_EQ(runtime.usesAfterRelease(), 0U);
    EXPECT_EQ(runtime.liveObjects(), 0U);
    EXPECT_GT(runtime.factories("JsonObject").size(), 1U);
}

}  // namespace
