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

/// The rules that the fields of a data class set for the values of its events: "integer" is a text
/// that begins with a number of 32 bits, a type with "varchar" in it limits the value's length in
/// UTF-16 code units, and a field whose "nullable" is "false" or "False" must have a value. Fields
/// named "DT" and "V" set none.
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

    /// The members "DT" and "V" of the event that was judged last; no value where there is none.
    JsonValue time() const { return members_[time_].value; }
    JsonValue version() const { return members_[version_].value; }

  private:
    enum class Kind { kAny, kInteger, kVarchar };

    struct Rule {
        Kind kind = Kind::kAny;
        bool required = false;
        /// The limit that a varchar type's digits set; nothing when it has no digits.
        std::optional<std::uint64_t> limit;
        /// The place of the field's name and value; fields of one identifier share one.
        std::size_t slot = 0;
    };

    /// A member of the event at hand.
    struct Member {
        JsonValue value;
        /// Measured once, however many fields are held to it.
        std::optional<std::uint64_t> length;
    };

    static std::uint64_t lengthOf(Member& member);
    static Rule ruleOf(const Field& field);
    std::size_t slotOf(const std::string& name);
    void readValues(JsonValue values);

    std::map<std::string, std::size_t, std::less<>> slots_;
    /// Borrowed from `slots_`, whose keys stay where they are when the rules are moved.
    std::vector<std::string_view> names_;
    std::vector<Rule> rules_;
    std::size_t time_ = 0;
    std::size_t version_ = 0;
    std::vector<Member> members_;
};

}  // namespace Orvel::Service

#endif
