/// The service while it is looked at and while it ends.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "concurrency/running_service.h"
#include "orvel/analytics.h"
#include "support/data_classes.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Emitters::AnalyticsResult;

/// A session that sends one event at a time, until the service does not take it any more.
class Sender {
  public:
    Sender() {
        dataClass_.dateTime = 1;
        EXPECT_EQ(session_.RegisterDataClass(&dataClass_), AnalyticsResult::Success);
    }

    /// @return whether the event was acknowledged.
    bool send() {
        EXPECT_EQ(session_.CollectEvent(&dataClass_, ORVEL_TEXT("{\"n\":1}")),
                  AnalyticsResult::Success);
        return session_.SendEvents() == AnalyticsResult::Success;
    }

  private:
    AnalyticsSession session_{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.0")};
    TestDataClass dataClass_{{field(ORVEL_TEXT("n"), ORVEL_TEXT("integer"))}};
};

TEST(ServiceOnThreads, ShowsNoLessThanItHasAcknowledged) {
    constexpr int kSenders = 4;
    constexpr int kEvents = 8;
    RunningService service;
    std::atomic<std::size_t> acknowledged = 0;
    std::atomic<int> sending = kSenders;
    onThreads(kSenders + 1, [&](int thread) {
        if (thread == kSenders) {
            while (sending > 0) {
                const std::size_t before = acknowledged.load();
                EXPECT_GE(service.storedEvents().size(), before);
            }
            return;
        }
        Sender sender;
        for (int event = 0; event < kEvents; ++event) {
            EXPECT_TRUE(sender.send());
            ++acknowledged;
        }
        --sending;
    });
    EXPECT_EQ(service.storedEvents().size(), static_cast<std::size_t>(kSenders * kEvents));
    EXPECT_EQ(acknowledged.load(), static_cast<std::size_t>(kSenders * kEvents));
}

TEST(ServiceOnThreads, KeepsWhatItHasAcknowledgedWhenItEndsUnderLoad) {
    constexpr int kSenders = 4;
    constexpr std::size_t kEnough = 20;
    RunningService service;
    std::vector<Sender> senders(kSenders);
    std::atomic<std::size_t> acknowledged = 0;
    onThreads(kSenders, [&](int thread) {
        while (senders[static_cast<std::size_t>(thread)].send()) {
            if (++acknowledged == kEnough) {
                service.stop();
            }
        }
    });
    EXPECT_GE(acknowledged.load(), kEnough);
    // The reply to what was stored last may have been lost with its connection.
    EXPECT_GE(service.storedEvents().size(), acknowledged.load());
    EXPECT_EQ(service.complaints(), 0U);
}

}  // namespace
}  // namespace Orvel::TestSupport
