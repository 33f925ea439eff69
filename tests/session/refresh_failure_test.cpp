/// A session whose renewal fails, on a platform that runs out of GUIDs.

#include <gtest/gtest.h>

#include <new>

#include "events/guid_source.h"
#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/data_classes.h"
#include "support/session_access.h"

namespace {

int guidsLeft = 0;
std::uint32_t lastGuid = 0;

}  // namespace

namespace Orvel::Analytics::Events {

Guid newGuid() {
    if (guidsLeft == 0) {
        throw std::bad_alloc();
    }
    --guidsLeft;
    return {++lastGuid, 0, 0, {}};
}

bool platformReadsGuid(const WideString& /*text*/) { return true; }

}  // namespace Orvel::Analytics::Events

namespace {

using Orvel::WideString;
using Orvel::Analytics::Session::SessionAccess;
using Orvel::Analytics::Testing::ScriptedEndpoint;
using Orvel::TestSupport::field;
using Orvel::TestSupport::TestDataClass;

class RefreshFailure : public testing::Test {
  protected:
    RefreshFailure() { guidsLeft = 2; }

    ScriptedEndpoint script;
};

TEST_F(RefreshFailure, IsRaisedBeforeAnythingIsSent) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    TestDataClass evt({field(ORVEL_TEXT("a"), ORVEL_TEXT("text"))});
    session.CollectEvent(&evt, ORVEL_TEXT(R"({"a":1})"));
    EXPECT_THROW(session.SendEvents(), std::bad_alloc);
    EXPECT_TRUE(script.executed.empty());
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
}

TEST_F(RefreshFailure, DoesNotComeBetweenAReplyThatCannotBeReadAndItsError) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    const WideString before = SessionAccess::appSession(session).sessionId;
    script.executions = {{0, ORVEL_TEXT("MyApp::ACK::")}, {0, ORVEL_TEXT("ErrorCode")}};
    guidsLeft = 2;
    EXPECT_THROW(session.SendEvents(), Orvel::Analytics::hresult_error);
    EXPECT_NE(SessionAccess::appSession(session).sessionId, before);
}

TEST_F(RefreshFailure, LeavesTheSessionAsItWas) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    const auto before = SessionAccess::appSession(session);
    guidsLeft = 1;
    EXPECT_THROW(session.SendEvents(), std::bad_alloc);
    EXPECT_EQ(SessionAccess::appSession(session).sessionId, before.sessionId);
    EXPECT_EQ(SessionAccess::appSession(session).userId, before.userId);
    guidsLeft = 2;
    EXPECT_EQ(static_cast<int>(session.SendEvents()), 0);
    EXPECT_NE(SessionAccess::appSession(session).sessionId, before.sessionId);
}

}  // namespace
