/// Memory runs out while an event is being collected: nothing is queued then, and nothing is lost.

#include <string>
#include <utility>

#include "memory/memory_test.h"

namespace Orvel::TestSupport {
namespace {

using nlohmann::json;
using Result = SessionScene::Result;

struct Event {
    std::string name;
    std::string text;
    Result result = Result::Success;
};

std::string withText(const std::string& text) { return json{{"n", 7}, {"text", text}}.dump(); }

std::string nested(std::size_t depth) {
    return R"({"n":7,"deep":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

std::string withManyMembers() {
    json event = {{"n", 7}};
    for (int member = 0; member < 50; ++member) {
        event["member" + std::to_string(member)] = member;
    }
    return event.dump();
}

std::string withEscapes() {
    std::string text;
    for (int i = 0; i < 1'000; ++i) {
        text += "\"\\\n\x01 \u00e9\U0001F600";
    }
    return withText(text);
}

const Event kEvents[] = {
    {"a small event", withText("short")},
    {"a large event", withText(plainText(30'000))},
    {"a nested event", nested(1'000)},
    {"an event full of escapes", withEscapes()},
    {"an event with many members", withManyMembers()},
    {"an event that is no JSON", R"({"n":7,"text":)", Result::MalformedJson},
    {"an event that nests too deep", nested(1'100), Result::MalformedJson},
    {"an event with a text for a number", R"({"n":"seven, as a text"})", Result::GenericError},
    {"an event with too long a text", withText(plainText(100'001)), Result::FieldValueTooLong},
};

class CollectingWithoutMemory : public MemoryTest, public testing::WithParamInterface<Event> {};

INSTANTIATE_TEST_SUITE_P(, CollectingWithoutMemory, testing::ValuesIn(kEvents),
                         [](const auto& event) {
                             std::string name = event.param.name;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

TEST_P(CollectingWithoutMemory, LeavesTheQueueAsItWas) {
    const Event& event = GetParam();
    const WideString text = toWide(event.text);
    exhaustion("CollectEvent, " + event.name)
        .run(
            sessionWith(2),
            [&](SessionScene& scene) {
                scene.result = scene.session.CollectEvent(&scene.evt, text);
            },
            [&](SessionScene& scene, bool raised) {
                std::vector<json> expected = scene.collected;
                if (!raised) {
                    EXPECT_EQ(scene.result, event.result);
                    if (event.result == Result::Success) {
                        expected.push_back(json::parse(event.text));
                    }
                }
                EXPECT_EQ(scene.queue(), expected);
                EXPECT_TRUE(scene.isSameSession());
                scene.expectUsable();
            });
}

}  // namespace
}  // namespace Orvel::TestSupport
