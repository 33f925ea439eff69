#include "service/batch.h"

namespace Orvel::Service {

namespace {

[[noreturn]] void malformed() { throw Refusal(ErrorNames::kMalformedJson); }

JsonValue::Member objectMember(JsonValue object, std::string_view name) {
    const auto member = object.member(name);
    if (!member.value.isObject()) {
        malformed();
    }
    return member;
}

JsonValue::Member arrayMember(JsonValue object, std::string_view name) {
    const auto member = object.member(name);
    if (!member.value.isArray()) {
        malformed();
    }
    return member;
}

std::string textMember(JsonValue object, std::string_view name) {
    const auto text = object.member(name).value.string();
    if (!text) {
        malformed();
    }
    return std::string(*text);
}

std::string numberMember(JsonValue object, std::string_view name) {
    const auto digits = object.member(name).value.number();
    if (!digits) {
        malformed();
    }
    return std::string(*digits);
}

Session readSession(JsonValue identity) {
    Session session;
    session.versionTag = textMember(identity, "V");
    session.started = textMember(identity, "DT");
    session.application = textMember(identity, "1");
    session.applicationVersion = textMember(identity, "2");
    session.id = textMember(identity, "3");
    session.counter = numberMember(identity, "4");
    session.user = textMember(identity, "5");
    session.device = textMember(identity, "6");
    session.environment = textMember(identity, "7");
    return session;
}

/// The name of an event's last value, if it has one: only what follows it must be walked through
/// to find where the event ends.
std::optional<std::string_view> lastNameOfValues(JsonValue event) {
    if (!event.isObject()) {
        return std::nullopt;
    }
    JsonValue values;
    event.forEachMember([&values](std::string_view, JsonValue value) { values = value; });
    return values.isObject() ? values.lastName() : std::nullopt;
}

}  // namespace

Batch::Batch(std::string_view document)
    : json_(JsonDocument::parseObject(document)), dataText_(document) {
    const auto events = arrayMember(json_.root(), "events");
    if (events.value.size() != 1) {
        malformed();
    }
    JsonValue only;
    events.value.forEachElement([&only](JsonValue element) { only = element; });
    if (!only.isObject()) {
        malformed();
    }
    const auto data = arrayMember(only, "data");
    session_ = readSession(objectMember(only, "appsession").value);
    data_ = data.value;
    dataText_.enterMember(events.index);
    dataText_.enterArray();
    dataText_.enterMember(data.index);
    dataText_.enterArray();
}

std::vector<JudgedEvent> Batch::judge(const FindClass& findClass,
                                      const MayReport& mayReport) const {
    std::vector<JudgedEvent> judged;
    judged.reserve(data_.size());
    EventJudge judge(findClass, mayReport);
    JsonCursor text = dataText_;
    data_.forEachElement([&](JsonValue event) {
        const auto name = lastNameOfValues(event);
        const std::string_view characters =
            name ? text.takeElement(json_.placeOf(*name), 2) : text.takeElement();
        judged.push_back(judge.judge(judged.size(), event, characters));
    });
    return judged;
}

}  // namespace Orvel::Service
