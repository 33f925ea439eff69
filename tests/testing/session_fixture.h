#ifndef ORVEL_TESTING_SESSION_FIXTURE_H
#define ORVEL_TESTING_SESSION_FIXTURE_H

#include <gmock/gmock.h>

#include <string>

#include "orvel/analytics.h"
#include "orvel/analytics/testing.h"
#include "support/data_classes.h"

namespace Orvel::Analytics::Testing {

using Emitters::AnalyticsResult;

/// A session of an application, and the service that it reaches.
class SessionWithService : public testing::Test {
  protected:
    void collect(const std::string& event) {
        ASSERT_EQ(session.CollectEvent(&click, toWide(event)), AnalyticsResult::Success);
    }

    Service service;
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.2"),
                             ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950e}")};
    TestSupport::TestDataClass click{
        {TestSupport::field(ORVEL_TEXT("button"), ORVEL_TEXT("varchar(20)")),
         TestSupport::field(ORVEL_TEXT("count"), ORVEL_TEXT("integer"), ORVEL_TEXT("false"))},
        ORVEL_TEXT("click")};
};

}  // namespace Orvel::Analytics::Testing

#endif
