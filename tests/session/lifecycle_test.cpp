#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/data_classes.h"
#include "support/fake_clock.h"
#include "support/session_access.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Orvel::Analytics::Session::AppSession;
using Orvel::Analytics::Session::SessionAccess;
using Orvel::Analytics::Testing::ScriptedEndpoint;
using Orvel::TestSupport::kSomeTime;
using Orvel::TestSupport::setCurrentTime;
using Orvel::TestSupport::TestDataClass;

static_assert(!std::is_default_constructible_v<AnalyticsSession>);
static_assert(std::is_nothrow_move_constructible_v<AnalyticsSession>);
static_assert(std::is_nothrow_move_assignable_v<AnalyticsSession>);

const WideString kUser = ORVEL_TEXT("{0f8fad5b-d9cb-469F-a165-70867728950E}");
constexpr std::int64_t kTwoTo31 = std::int64_t{1} << 31;

/// The text that constructing a session throws; empty when it throws none.
std::string refusal(const WideString& name, const WideString& version, const WideString& user) {
    try {
        AnalyticsSession(name, version, user, {});
    } catch (const char* message) {
        return message;
    }
    return "";
}

int result(AnalyticsResult value) { return static_cast<int>(value); }

class Lifecycle : public testing::Test {
  protected:
    Lifecycle() { setCurrentTime(kSomeTime); }

    static AnalyticsSession makeSession(WideString user = {}) {
        return {ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.2"), std::move(user), ORVEL_TEXT("by hand")};
    }

    static void collect(AnalyticsSession& session, WideString event) {
        TestDataClass dataClass({});
        // A session whose content was moved away collects on.
        // NOLINTNEXTLINE(clang-analyzer-cplusplus.Move)
        ASSERT_EQ(session.CollectEvent(&dataClass, std::move(event)), AnalyticsResult::Success);
    }

    ScriptedEndpoint script;
};

TEST_F(Lifecycle, RefusesAnEmptyNameBeforeAnythingElse) {
    EXPECT_EQ(refusal({}, ORVEL_TEXT("1"), {}), "App name cannot be null or empty");
    EXPECT_EQ(refusal({}, {}, ORVEL_TEXT("guid")), "App name cannot be null or empty");
}

TEST_F(Lifecycle, RefusesAnEmptyVersionBeforeTheUser) {
    EXPECT_EQ(refusal(ORVEL_TEXT("a"), {}, ORVEL_TEXT("guid")),
              "App version cannot be null or empty");
}

TEST_F(Lifecycle, RefusesAUserThatIsNoGuidInBraces) {
    EXPECT_EQ(refusal(ORVEL_TEXT("a"), ORVEL_TEXT("1"), ORVEL_TEXT("guid")),
              "UserID must be a GUID");
    EXPECT_EQ(refusal(ORVEL_TEXT("a"), ORVEL_TEXT("1"),
                      ORVEL_TEXT("0f8fad5b-d9cb-469f-a165-70867728950e")),
              "UserID must be a GUID");
}

TEST_F(Lifecycle, KeepsASuppliedUserAsGiven) {
    const WideString zero = ORVEL_TEXT("{00000000-0000-0000-0000-000000000000}");
    AnalyticsSession session = makeSession(zero);
    EXPECT_EQ(SessionAccess::appSession(session).userId, zero);
    EXPECT_TRUE(SessionAccess::userIdSupplied(session));
    AnalyticsSession other = makeSession(kUser);
    SessionAccess::RefreshSession(other);
    EXPECT_EQ(SessionAccess::appSession(other).userId, kUser);
}

TEST_F(Lifecycle, GeneratesAUserForEachSessionWhenNoneIsSupplied) {
    AnalyticsSession session = makeSession();
    const WideString first = SessionAccess::appSession(session).userId;
    EXPECT_EQ(first.size(), 36U);
    EXPECT_NE(first.front(), '{');
    EXPECT_FALSE(SessionAccess::userIdSupplied(session));
    SessionAccess::RefreshSession(session);
    EXPECT_NE(SessionAccess::appSession(session).userId, first);
}

TEST_F(Lifecycle, FillsTheRecordAtConstruction) {
    AnalyticsSession session = makeSession();
    const AppSession& record = SessionAccess::appSession(session);
    EXPECT_EQ(record.appName, ORVEL_TEXT("MyApp"));
    EXPECT_EQ(record.appVersion, ORVEL_TEXT("1.2"));
    EXPECT_TRUE(record.versionTag.empty());
    EXPECT_EQ(record.sessionId.size(), 36U);
    EXPECT_NE(record.sessionId, record.userId);
    EXPECT_EQ(record.sessionCounter, 0);
    EXPECT_FALSE(record.deviceId.empty());
    EXPECT_EQ(record.environment, ORVEL_TEXT("Production"));
    EXPECT_EQ(record.startTime, kSomeTime);
    EXPECT_EQ(record.appSessionInitiated, ORVEL_TEXT("by hand"));
    EXPECT_EQ(SessionAccess::endTime(session), 0);
    EXPECT_TRUE(SessionAccess::eventQueue(session).empty());
}

TEST_F(Lifecycle, TalksToNobodyAtConstructionAndDestruction) {
    {
        AnalyticsSession session = makeSession();
        collect(session, ORVEL_TEXT("{\"a\":1}"));
    }
    EXPECT_TRUE(script.endpoints.empty());
}

TEST_F(Lifecycle, KeepsTheMarkerAndNeverSendsIt) {
    AnalyticsSession session = makeSession();
    SessionAccess::SetAppSessionInitiated(session, ORVEL_TEXT("by magic"));
    EXPECT_EQ(SessionAccess::appSession(session).appSessionInitiated, ORVEL_TEXT("by magic"));
    EXPECT_EQ(SessionAccess::generateEventsJsonStr(session).find(ORVEL_TEXT("by magic")),
              WideString::npos);
}

TEST_F(Lifecycle, AcceptsAStartThatIsNotInTheFuture) {
    AnalyticsSession session = makeSession();
    EXPECT_EQ(result(session.SetStartTime(kSomeTime + 1)), 7);
    EXPECT_EQ(SessionAccess::appSession(session).startTime, kSomeTime);
    EXPECT_EQ(result(session.SetStartTime(0)), 0);
    EXPECT_EQ(SessionAccess::appSession(session).startTime, 0);
    EXPECT_EQ(result(session.SetStartTime(kSomeTime)), 0);
    EXPECT_EQ(result(session.SetStartTime(INT64_MIN)), 0);
    EXPECT_EQ(result(session.SetStartTime(INT64_MAX)), 7);
}

TEST_F(Lifecycle, AcceptsAnEndThatIsNotBeforeTheStart) {
    AnalyticsSession session = makeSession();
    session.SetStartTime(1000);
    EXPECT_EQ(result(session.SetEndTime(999)), 6);
    EXPECT_EQ(SessionAccess::endTime(session), 0);
    EXPECT_EQ(result(session.SetEndTime(1000)), 0);
    EXPECT_EQ(SessionAccess::endTime(session), 1000);
    EXPECT_EQ(result(session.SetEndTime(kSomeTime + 1'000'000)), 0) << "the future is no matter";
}

TEST_F(Lifecycle, TakesTheDifferenceOfEndAndStartOn32Bits) {
    AnalyticsSession session = makeSession();
    session.SetStartTime(1000);
    EXPECT_EQ(result(session.SetEndTime(1000 + kTwoTo31)), 6);
    EXPECT_EQ(result(session.SetEndTime(1000 + kTwoTo31 - 1)), 0);
    EXPECT_EQ(result(session.SetEndTime(1000 - kTwoTo31)), 6);
    EXPECT_EQ(result(session.SetEndTime(1000 - kTwoTo31 - 1)), 0);
    EXPECT_EQ(result(session.SetEndTime(INT64_MIN + 1000)), 0);
}

TEST_F(Lifecycle, RefreshBeginsANewSessionOfTheSameApplication) {
    AnalyticsSession session = makeSession();
    collect(session, ORVEL_TEXT("{\"a\":1}"));
    AppSession& record = SessionAccess::appSession(session);
    record.sessionCounter = 5;
    record.versionTag = ORVEL_TEXT("7");
    session.SetEndTime(kSomeTime);
    const AppSession before = record;
    setCurrentTime(kSomeTime + 60);
    SessionAccess::RefreshSession(session);
    EXPECT_NE(record.sessionId, before.sessionId);
    EXPECT_EQ(record.sessionId.size(), 36U);
    EXPECT_EQ(record.sessionCounter, 0);
    EXPECT_EQ(record.startTime, kSomeTime + 60);
    EXPECT_EQ(SessionAccess::endTime(session), 0);
    EXPECT_EQ(record.appName, before.appName);
    EXPECT_EQ(record.appVersion, before.appVersion);
    EXPECT_EQ(record.versionTag, ORVEL_TEXT("7"));
    EXPECT_EQ(record.deviceId, before.deviceId);
    EXPECT_EQ(record.environment, before.environment);
    EXPECT_EQ(record.appSessionInitiated, before.appSessionInitiated);
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
}

TEST_F(Lifecycle, CopiesShareNothing) {
    AnalyticsSession source = makeSession(kUser);
    collect(source, ORVEL_TEXT("{\"a\":1}"));
    collect(source, ORVEL_TEXT("{\"a\":2}"));
    source.SetEndTime(kSomeTime);
    AnalyticsSession copy(source);
    EXPECT_EQ(SessionAccess::eventQueue(copy), SessionAccess::eventQueue(source));
    EXPECT_EQ(SessionAccess::appSession(copy).sessionId,
              SessionAccess::appSession(source).sessionId);
    EXPECT_EQ(SessionAccess::endTime(copy), kSomeTime);
    EXPECT_TRUE(SessionAccess::userIdSupplied(copy));
    collect(copy, ORVEL_TEXT("{\"a\":3}"));
    EXPECT_EQ(SessionAccess::eventQueue(source).size(), 2U);

    AnalyticsSession assigned = makeSession();
    collect(assigned, ORVEL_TEXT("{\"b\":1}"));
    assigned = copy;
    EXPECT_EQ(SessionAccess::eventQueue(assigned), SessionAccess::eventQueue(copy));
    EXPECT_TRUE(SessionAccess::userIdSupplied(assigned));
}

TEST_F(Lifecycle, AssigningASessionToItselfChangesNothing) {
    AnalyticsSession session = makeSession();
    collect(session, ORVEL_TEXT("{\"a\":1}"));
    const AnalyticsSession before(session);
    AnalyticsSession& itself = session;
    session = itself;
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
    session = std::move(itself);
    EXPECT_EQ(SessionAccess::eventQueue(session).size(), 1U);
    AnalyticsSession expected(before);
    EXPECT_EQ(SessionAccess::appSession(session).sessionId,
              SessionAccess::appSession(expected).sessionId);
    EXPECT_EQ(SessionAccess::appSession(session).appName, ORVEL_TEXT("MyApp"));
}

// What is left of a session moved from is promised.
// NOLINTBEGIN(bugprone-use-after-move)
TEST_F(Lifecycle, ASessionMovedFromCanStillCollect) {
    AnalyticsSession source = makeSession(kUser);
    collect(source, ORVEL_TEXT("{\"a\":1}"));
    source.SetEndTime(kSomeTime);
    AnalyticsSession moved(std::move(source));
    EXPECT_EQ(SessionAccess::eventQueue(moved).size(), 1U);
    EXPECT_EQ(SessionAccess::appSession(moved).userId, kUser);
    EXPECT_EQ(SessionAccess::endTime(moved), kSomeTime);
    EXPECT_TRUE(SessionAccess::userIdSupplied(moved));

    EXPECT_TRUE(SessionAccess::eventQueue(source).empty());
    EXPECT_TRUE(SessionAccess::appSession(source).appName.empty());
    EXPECT_TRUE(SessionAccess::appSession(source).deviceId.empty());
    collect(source, ORVEL_TEXT("{\"a\":2}"));
    EXPECT_EQ(SessionAccess::eventQueue(source).size(), 1U);
}

TEST_F(Lifecycle, MoveAssignmentDiscardsTheTargetsQueueAndEmptiesTheSources) {
    AnalyticsSession source = makeSession(kUser);
    collect(source, ORVEL_TEXT("{\"a\":1}"));
    AnalyticsSession target = makeSession();
    collect(target, ORVEL_TEXT("{\"b\":1}"));
    collect(target, ORVEL_TEXT("{\"b\":2}"));
    target = std::move(source);
    ASSERT_EQ(SessionAccess::eventQueue(target).size(), 1U);
    EXPECT_NE(SessionAccess::eventQueue(target).front().find(ORVEL_TEXT("\"a\":1")),
              WideString::npos);
    EXPECT_TRUE(SessionAccess::eventQueue(source).empty());
    EXPECT_TRUE(SessionAccess::userIdSupplied(target));
}
// NOLINTEND(bugprone-use-after-move)

TEST(AppSession, StartsEmptyAndMovesItsTexts) {
    AppSession record;
    EXPECT_TRUE(record.appName.empty());
    EXPECT_TRUE(record.appSessionInitiated.empty());
    EXPECT_EQ(record.sessionCounter, 0);
    EXPECT_EQ(record.startTime, 0);
    record.appName = ORVEL_TEXT("a");
    record.appSessionInitiated = ORVEL_TEXT("b");
    record.startTime = 7;
    AppSession moved(std::move(record));
    EXPECT_EQ(moved.appName, ORVEL_TEXT("a"));
    EXPECT_EQ(moved.startTime, 7);
    EXPECT_TRUE(record.appName.empty());  // NOLINT(bugprone-use-after-move)
    AppSession assigned;
    assigned = moved;
    EXPECT_EQ(assigned.appSessionInitiated, ORVEL_TEXT("b"));
    AppSession& itself = assigned;
    assigned = std::move(itself);
    EXPECT_EQ(assigned.appSessionInitiated, ORVEL_TEXT("b"));
}

}  // namespace
