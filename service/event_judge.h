#ifndef ORVEL_SERVICE_EVENT_JUDGE_H
#define ORVEL_SERVICE_EVENT_JUDGE_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "service/event_rules.h"
#include "service/json.h"
#include "service/store.h"

namespace Orvel::Service {

/// The latest registration of an identifier by the application that sends.
using FindClass = std::function<std::optional<StoredClass>(std::string_view identifier)>;

/// Whether the application that sends may report events of a class.
using MayReport = std::function<bool(std::string_view identifier)>;

/// Judges the events of one batch.
///
/// An event is {identifier of its class: {field: value, ..., "DT": time, "V": version}}. The rules
/// are tried in this order, and the first that is broken gives the event's error: the form, whether
/// the application may report such events, the registration of the class, the class's fields in
/// their order, "DT". Nothing is given back of the values that an application may not report.
class EventJudge {
  public:
    /// @param mayReport every class when nothing is said.
    explicit EventJudge(FindClass findClass, MayReport mayReport = {})
        : findClass_(std::move(findClass)), mayReport_(std::move(mayReport)) {}

    /// @param index the event's place in the batch.
    /// @param text the event's characters; what is given back borrows from them and from `event`.
    JudgedEvent judge(std::size_t index, JsonValue event, std::string_view text);

  private:
    struct KnownClass {
        std::int64_t id;
        EventRules rules;
    };

    KnownClass* knownClass(std::string_view identifier);

    FindClass findClass_;
    MayReport mayReport_;
    /// What the batch has asked for so far; no value for a class that is not registered.
    std::map<std::string, std::optional<KnownClass>, std::less<>> classes_;
};

}  // namespace Orvel::Service

#endif
