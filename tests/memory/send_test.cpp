/// Memory runs out while events are being sent: either nothing has happened, or the batch was sent
/// or lost and the session renewed.

#include <string>

#include "memory/memory_test.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::hresult_error;
using nlohmann::json;
using Result = SessionScene::Result;

class SendingWithoutMemory : public MemoryTest {
  protected:
    static void judge(SessionScene& scene, bool raised) {
        const std::vector<json> delivered = scene.delivered();
        if (raised && scene.isSameSession()) {
            EXPECT_EQ(scene.queue(), scene.collected) << "nothing has happened";
            EXPECT_TRUE(scene.service.commands().empty());
        } else {
            EXPECT_FALSE(scene.isSameSession());
            EXPECT_TRUE(scene.queue().empty());
            EXPECT_TRUE(delivered == scene.collected || (raised && delivered.empty()));
            EXPECT_LE(scene.service.commands().size(), 1u) << "at most once";
        }
        scene.expectUsable();
    }

    void send(const std::string& name, std::size_t events, const WideString& reply = {},
              Result expected = Result::Success) {
        exhaustion("SendEvents, " + name)
            .run(
                [&] {
                    auto scene = std::make_unique<SessionScene>(service(), events);
                    scene->service.answerWith(reply);
                    return scene;
                },
                [](SessionScene& scene) { scene.result = scene.session.SendEvents(); },
                [&](SessionScene& scene, bool raised) {
                    EXPECT_TRUE(raised || scene.result == expected);
                    judge(scene, raised);
                });
    }
};

TEST_F(SendingWithoutMemory, IsAllOrNothingForAnEmptyQueue) { send("no event", 0); }

TEST_F(SendingWithoutMemory, IsAllOrNothingForOneEvent) { send("one event", 1); }

TEST_F(SendingWithoutMemory, IsAllOrNothingForManyEvents) { send("20 events", 20); }

TEST_F(SendingWithoutMemory, IsAllOrNothingWhenTheServiceRefuses) {
    send("refused by the service", 2,
         ORVEL_TEXT("AnApplication::COLLECT_DATACLASS::")
             ORVEL_TEXT(R"({"Results":["ErrorCode :MalformedJson","ErrorCode :QuotaExceeded"]})"),
         Result::QuotaExceeded);
}

TEST_F(SendingWithoutMemory, IsAllOrNothingWhenTheReplyCannotBeRead) {
    exhaustion("SendEvents, with a reply that cannot be read")
        .run(
            [&] {
                auto scene = std::make_unique<SessionScene>(service());
                scene->service.answerWith(ORVEL_TEXT("ErrorCode, but no word of what went wrong"));
                return scene;
            },
            [](SessionScene& scene) {
                try {
                    scene.session.SendEvents();
                    FAIL() << "the reply was read";
                } catch (const hresult_error&) {
                    scene.result = Result::GenericError;
                }
            },
            [](SessionScene& scene, bool raised) {
                EXPECT_TRUE(raised || scene.result == Result::GenericError);
                judge(scene, raised);
            });
}

}  // namespace
}  // namespace Orvel::TestSupport
