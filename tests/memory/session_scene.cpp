#include "memory/session_scene.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/session_access.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Session::SessionAccess;
using nlohmann::json;

/// What an application gave for an event, out of its record.
json valuesOf(const json& record) {
    json values = record.at("Evt");
    values.erase("DT");
    values.erase("V");
    return values;
}

}  // namespace

std::string plainText(std::size_t length) { return std::string(length, 'x'); }

SessionScene::SessionScene(AnsweringService& answering, std::size_t queued, WideString application)
    : service(answering),
      session(application, ORVEL_TEXT("1.2.3-of-some-length")),
      evt({field(ORVEL_TEXT("n"), ORVEL_TEXT("integer")),
           field(ORVEL_TEXT("text"), ORVEL_TEXT("varchar(100000)"))}),
      application_(std::move(application)) {
    for (std::size_t n = 0; n < queued; ++n) {
        collect(json{{"n", n}, {"text", plainText(n % 2 == 0 ? 5 : 300)}}.dump());
    }
    firstSessionId_ = SessionAccess::appSession(session).sessionId;
    firstUserId_ = SessionAccess::appSession(session).userId;
}

SessionScene::~SessionScene() { service.forget(); }

void SessionScene::collect(const std::string& event) {
    ASSERT_EQ(session.CollectEvent(&evt, toWide(event)), Result::Success);
    collected.push_back(json::parse(event));
}

std::vector<json> SessionScene::queue() {
    std::vector<json> events;
    for (const WideString& record : SessionAccess::eventQueue(session)) {
        events.push_back(valuesOf(json::parse(toUtf8(record))));
    }
    return events;
}

std::vector<json> SessionScene::delivered() const {
    const WideString framing = application_ + ORVEL_TEXT("::COLLECT_DATACLASS::");
    std::vector<json> events;
    for (const WideString& command : service.commands()) {
        if (command.starts_with(framing)) {
            const json batch = json::parse(toUtf8(command.substr(framing.size())));
            for (const json& record : batch.at("events").at(0).at("data")) {
                events.push_back(valuesOf(record));
            }
        }
    }
    return events;
}

bool SessionScene::isSameSession() {
    const auto& identity = SessionAccess::appSession(session);
    const bool sameId = identity.sessionId == firstSessionId_;
    EXPECT_EQ(sameId, identity.userId == firstUserId_) << "half renewed";
    return sameId;
}

void SessionScene::expectUsable() {
    service.forget();
    std::vector<json> expected = queue();
    collected.clear();
    collect(R"({"n":1000,"text":"afterwards"})");
    expected.push_back(collected.front());
    EXPECT_EQ(queue(), expected);
    EXPECT_EQ(session.SendEvents(), Result::Success);
    EXPECT_EQ(delivered(), expected);
    EXPECT_TRUE(queue().empty());
    EXPECT_FALSE(isSameSession());
}

}  // namespace Orvel::TestSupport
