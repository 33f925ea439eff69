/// Memory runs out while sessions are made, copied and moved.

#include <optional>
#include <utility>

#include "memory/memory_test.h"
#include "support/session_access.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Session::AppSession;
using Analytics::Session::SessionAccess;
using nlohmann::json;

const WideString kName = ORVEL_TEXT("An application");
const WideString kVersion = ORVEL_TEXT("1.2.3-of-some-length");
const WideString kUser = ORVEL_TEXT("{0f8fad5b-d9cb-469f-a165-70867728950e}");
const WideString kMarker = ORVEL_TEXT("initiated by a test");

class MakingASessionWithoutMemory : public MemoryTest {
  protected:
    template <typename Make>
    void make(const std::string& name, const Make& make, const WideString& user,
              const WideString& marker) {
        AnalyticsSession usual(kName, kVersion);
        const WideString device = SessionAccess::appSession(usual).deviceId;
        exhaustion("AnalyticsSession, " + name)
            .run([] { return std::make_unique<std::optional<AnalyticsSession>>(); }, make,
                 [&](std::optional<AnalyticsSession>& session, bool raised) {
                     EXPECT_EQ(session.has_value(), !raised);
                     if (session) {
                         const AppSession& identity = SessionAccess::appSession(*session);
                         EXPECT_EQ(identity.appName, kName);
                         EXPECT_EQ(identity.appVersion, kVersion);
                         EXPECT_EQ(identity.deviceId, device);
                         EXPECT_EQ(identity.environment, ORVEL_TEXT("Production"));
                         EXPECT_EQ(identity.sessionId.size(), 36u);
                         EXPECT_EQ(identity.userId.size(), user.empty() ? 36u : user.size());
                         EXPECT_EQ(identity.appSessionInitiated, marker);
                     }
                 });
    }
};

TEST_F(MakingASessionWithoutMemory, MakesNoneOrACompleteOne) {
    make("without a user", [](auto& session) { session.emplace(kName, kVersion); }, {}, {});
    make("with a user", [](auto& session) { session.emplace(kName, kVersion, kUser); }, kUser, {});
    make(
        "with a user and a marker",
        [](auto& session) { session.emplace(kName, kVersion, kUser, kMarker); }, kUser, kMarker);
}

/// A session and another one, with other events.
struct TwoSessions {
    explicit TwoSessions(AnsweringService& service)
        : one(service, 3, kName), other(service, 2, ORVEL_TEXT("Another application")) {
        other.collect(R"({"n":77,"text":"the other one's"})");
    }

    SessionScene one;
    SessionScene other;
    std::optional<AnalyticsSession> made;
};

WideString nameOf(AnalyticsSession& session) { return SessionAccess::appSession(session).appName; }

class CopyingASessionWithoutMemory : public MemoryTest {
  protected:
    auto twoSessions() {
        return [this] { return std::make_unique<TwoSessions>(service()); };
    }
};

TEST_F(CopyingASessionWithoutMemory, MakesNoneOrACompleteOne) {
    exhaustion("AnalyticsSession, copied")
        .run(
            twoSessions(), [](TwoSessions& two) { two.made.emplace(two.one.session); },
            [](TwoSessions& two, bool raised) {
                EXPECT_EQ(two.made.has_value(), !raised);
                if (two.made) {
                    EXPECT_EQ(SessionAccess::eventQueue(*two.made),
                              SessionAccess::eventQueue(two.one.session));
                    EXPECT_EQ(nameOf(*two.made), kName);
                }
                EXPECT_EQ(two.one.queue(), two.one.collected);
                two.one.expectUsable();
            });
}

TEST_F(CopyingASessionWithoutMemory, ReplacesAllOfASessionOrNothing) {
    exhaustion("AnalyticsSession, copied over another one")
        .run(
            twoSessions(), [](TwoSessions& two) { two.one.session = two.other.session; },
            [](TwoSessions& two, bool raised) {
                EXPECT_EQ(nameOf(two.one.session), raised ? kName : nameOf(two.other.session));
                EXPECT_EQ(two.one.queue(), raised ? two.one.collected : two.other.collected);
                EXPECT_EQ(two.other.queue(), two.other.collected);
                if (raised) {
                    two.one.expectUsable();
                }
                two.other.expectUsable();
            });
}

TEST_F(CopyingASessionWithoutMemory, MovesAndTimesTakeNone) {
    TwoSessions two(service());
    withoutMemory([&] {
        AnalyticsSession moved(std::move(two.one.session));
        two.one.session = std::move(moved);
        two.one.session.SetStartTime(1);
        two.one.session.SetStartTime(std::int64_t{1} << 60);
        two.one.session.SetEndTime(0);
        two.one.session.SetEndTime(2);
    });
    EXPECT_EQ(two.one.queue(), two.one.collected);
    two.one.expectUsable();
}

}  // namespace
}  // namespace Orvel::TestSupport
