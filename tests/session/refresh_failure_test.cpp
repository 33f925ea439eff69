/// A session whose renewal fails, on a platform that runs out of GUIDs.

#include <gtest/gtest.h>

#include <new>

#include "events/guid_source.h"
#include "orvel/analytics.h"
#include "support/scripted_rpc_client.h"
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
using Orvel::TestSupport::RpcScript;

class RefreshFailure : public testing::Test {
  protected:
    RefreshFailure() { guidsLeft = 2; }

    RpcScript script;
};

TEST_F(RefreshFailure, GivesWayToTheErrorOfTheReplyAndDoesNotEndTheProcess) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    script.executions = {{0, ORVEL_TEXT("MyApp::ACK::")}, {0, ORVEL_TEXT("ErrorCode")}};
    EXPECT_THROW(session.SendEvents(), Orvel::Analytics::hresult_error);
}

TEST_F(RefreshFailure, IsRaisedAfterASendThatSucceeded) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    EXPECT_THROW(session.SendEvents(), std::bad_alloc);
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
