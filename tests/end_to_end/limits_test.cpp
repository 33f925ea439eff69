/// The library and a service that does not let everybody do everything.

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "orvel/analytics.h"
#include "support/data_classes.h"
#include "support/service_process.h"

namespace {

using Orvel::Support::ServiceProcess;
using Orvel::TestSupport::field;
using Orvel::TestSupport::TestDataClass;

class SessionWithLimits : public testing::Test {
  protected:
    void start(const std::string& settings) {
        service.useSettings(settings);
        service.start();
        service.useEndpoint();
    }
    int registerClass(TestDataClass& dataClass) {
        return static_cast<int>(session.RegisterDataClass(&dataClass));
    }
    void collect(TestDataClass& dataClass, int events) {
        for (int event = 0; event < events; ++event) {
            ASSERT_EQ(static_cast<int>(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"a\":1}"))),
                      0);
        }
    }
    int send() { return static_cast<int>(session.SendEvents()); }
    std::string stored() { return service.run({"events", "--good", "--count"}).out; }

    ServiceProcess service{ORVEL_SERVICE_PROGRAM};
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.2")};
    TestDataClass evt{{field(ORVEL_TEXT("a"), ORVEL_TEXT("integer"))}};
    TestDataClass secret{{}, ORVEL_TEXT("Secret")};
};

TEST_F(SessionWithLimits, MoreEventsThanADayHasAreRefused) {
    start("limits.events_per_day = 3");
    ASSERT_EQ(registerClass(evt), 0);
    collect(evt, 4);
    EXPECT_EQ(send(), 24);
    EXPECT_EQ(stored(), "0\n");
    collect(evt, 3);
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(stored(), "3\n");
}

TEST_F(SessionWithLimits, BatchWithMoreEventsThanItMayHaveIsRefused) {
    start("limits.batch_events = 3");
    ASSERT_EQ(registerClass(evt), 0);
    collect(evt, 4);
    EXPECT_EQ(send(), 24);
    collect(evt, 3);
    EXPECT_EQ(send(), 0);
}

TEST_F(SessionWithLimits, ApplicationThatIsNotOnTheListGetsNothing) {
    start("[[access.applications]]\nname = 'Other'");
    EXPECT_EQ(registerClass(evt), 11);
    EXPECT_EQ(send(), 1) << "of a refused handshake, sending says no more than that";
    ConsentObject consent;
    EXPECT_EQ(static_cast<int>(session.GetConsent(&consent)), 11);
    EXPECT_EQ(service.run({"classes"}).out, "");
}

TEST_F(SessionWithLimits, UserWhoIsNotOnTheListGetsNothing) {
    start("[[access.applications]]\nname = 'MyApp'\nusers = [" + std::to_string(::geteuid() + 1) +
          "]");
    EXPECT_EQ(registerClass(evt), 11);
    service.stop();
    start("[[access.applications]]\nname = 'MyApp'\nusers = [" + std::to_string(::geteuid()) + "]");
    EXPECT_EQ(registerClass(evt), 0);
}

TEST_F(SessionWithLimits, ClassThatIsNotOnTheListIsRefused) {
    start("[[access.applications]]\nname = 'MyApp'\ndata_classes = ['Evt']");
    EXPECT_EQ(registerClass(evt), 0);
    EXPECT_EQ(registerClass(secret), 12);
    collect(evt, 1);
    collect(secret, 1);
    EXPECT_EQ(send(), 12);
    EXPECT_EQ(stored(), "1\n");
}

}  // namespace
