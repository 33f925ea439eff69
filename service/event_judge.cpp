#include "service/event_judge.h"

#include "service/calendar.h"
#include "service/json_path.h"
#include "service/json_text.h"

namespace Orvel::Service {

namespace {

/// The one member of an event's object.
struct Record {
    std::string_view className;
    JsonValue values;
    std::size_t index = 0;
};

/// Of members with one name the last counts, so that they are one.
std::optional<Record> readRecord(JsonValue event) {
    if (!event.isObject() || event.size() == 0) {
        return std::nullopt;
    }
    Record record;
    bool oneName = true;
    std::size_t index = 0;
    event.forEachMember([&](std::string_view name, JsonValue value) {
        oneName = oneName && (index == 0 || name == record.className);
        record = {name, value, index++};
    });
    if (!oneName || !record.values.isObject()) {
        return std::nullopt;
    }
    return record;
}

/// The characters of the record's values: its last member's, so that only the event's own closing
/// brace follows them.
std::string_view valuesText(std::string_view event, std::size_t index) {
    JsonCursor cursor(event);
    cursor.enterMember(index);
    const std::string_view rest = cursor.rest();
    return rest.substr(0, rest.rfind('}', rest.size() - 2) + 1);
}

ErrorName faultOfTime(JsonValue time) {
    const auto text = time.string();
    if (!time || time.isNull() || (text && text->empty())) {
        return ErrorNames::kDateTimeFieldIsRequired;
    }
    return text && isCompactTimestamp(*text) ? ErrorName() : ErrorNames::kInvalidDatetimeFormat;
}

}  // namespace

EventJudge::KnownClass* EventJudge::knownClass(std::string_view identifier) {
    auto known = classes_.find(identifier);
    if (known == classes_.end()) {
        std::optional<KnownClass> entry;
        if (const auto stored = findClass_(identifier)) {
            entry.emplace(KnownClass{stored->id, EventRules(stored->fields)});
        }
        known = classes_.emplace(identifier, std::move(entry)).first;
    }
    return known->second ? &*known->second : nullptr;
}

JudgedEvent EventJudge::judge(std::size_t index, JsonValue event, std::string_view text) {
    JudgedEvent judged;
    judged.content = text;
    const auto refuse = [&judged, index](ErrorName error, auto... names) {
        judged.error = error;
        judged.path = "$.events[0].data[" + std::to_string(index) + "]";
        (appendPathMember(judged.path, names), ...);
        return judged;
    };

    const auto record = readRecord(event);
    if (!record) {
        return refuse(ErrorNames::kMalformedJson);
    }
    judged.className = record->className;
    if (mayReport_ && !mayReport_(record->className)) {
        judged.content = {};
        return refuse(ErrorNames::kDataclassIsNotAuthorizedForThisApplication, record->className);
    }
    KnownClass* known = knownClass(record->className);
    if (known == nullptr) {
        return refuse(ErrorNames::kUnregisteredDataclass, record->className);
    }
    if (const auto broken = known->rules.brokenField(record->values)) {
        return refuse(ErrorNames::kDataclassNotFollowRegisteredFormat, record->className, *broken);
    }
    const JsonValue time = known->rules.time();
    if (const ErrorName fault = faultOfTime(time); !fault.empty()) {
        return refuse(fault, record->className, std::string_view("DT"));
    }
    judged.content = valuesText(text, record->index);
    judged.dataClass = known->id;
    judged.version = known->rules.version().string();
    judged.time = time.string().value();
    return judged;
}

}  // namespace Orvel::Service
