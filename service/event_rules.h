#ifndef ORVEL_SERVICE_EVENT_RULES_H
#define ORVEL_SERVICE_EVENT_RULES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/data_class.h"
#include "service/json.h"

namespace Orvel::Service {

/// The rules that the fields of a data class set for the values of its events.
///
/// Used by one thread at a time.
class EventRules {
  public:
    explicit EventRules(const std::vector<Field>& fields);
    EventRules(EventRules&&) = default;
    EventRules& operator=(EventRules&&) = default;

    /// Judges the members of one event, an object.
    /// @return the identifier of the first field, in the class's order, whose rule is broken;
    ///     nothing when all are kept. Valid as long as these rules.
    std::optional<std::string_view> brokenField(JsonValue values);

  private:
    enum class Kind { kAny, kInteger, kVarchar };

    struct Rule {
        Kind kind = Kind::kAny;
        bool required = false;
        /// The limit that a varchar type's digits set; nothing when it has no digits.
        std::optional<std::uint64_t> limit;
        /// Borrowed from `slots_`, whose keys stay where they are when the rules are moved.
        std::string_view id;
        /// Where the field's value is put; fields of one identifier share one value.
        std::size_t slot = 0;
    };

    static Rule ruleOf(const Field& field);

    std::map<std::string, std::size_t, std::less<>> slots_;
    std::vector<Rule> rules_;
    std::vector<JsonValue> values_;
};

}  // namespace Orvel::Service

#endif
