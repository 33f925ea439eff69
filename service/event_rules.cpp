#include "service/event_rules.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace Orvel::Service {

namespace {

/// Longer than any text can be, even with its quotes.
constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max() - 2;

/// The number that the first digits of the text make; a number beyond the signed 32-bit range is no
/// limit that a text could reach.
std::optional<std::uint64_t> firstNumber(std::string_view text) {
    const std::size_t first = text.find_first_of("0123456789");
    if (first == std::string_view::npos) {
        return std::nullopt;
    }
    std::int32_t number = 0;
    const auto [end, error] =
        std::from_chars(text.data() + first, text.data() + text.size(), number);
    return error == std::errc() ? static_cast<std::uint64_t>(number) : kUnlimited;
}

/// Whether the value's text begins with a decimal number of the signed 32-bit range: whatever
/// follows the digits, such as a fraction, is not looked at.
bool beginsWithInteger(JsonValue value) {
    const auto text = value.number();
    std::int32_t number = 0;
    return text &&
           std::from_chars(text->data(), text->data() + text->size(), number).ec == std::errc();
}

}  // namespace

EventRules::EventRules(const std::vector<Field>& fields) {
    for (const Field& field : fields) {
        // These members are stamped on an event after its application's values were checked, in the
        // place of whatever the application gave there.
        if (field.id == "DT" || field.id == "V") {
            continue;
        }
        Rule rule = ruleOf(field);
        rule.slot = slotOf(field.id);
        rules_.push_back(rule);
    }
    time_ = slotOf("DT");
    version_ = slotOf("V");
}

std::size_t EventRules::slotOf(const std::string& name) {
    const auto [slot, isNew] = slots_.try_emplace(name, slots_.size());
    if (isNew) {
        names_.push_back(slot->first);
    }
    return slot->second;
}

EventRules::Rule EventRules::ruleOf(const Field& field) {
    Rule rule;
    rule.required = field.nullable == "false" || field.nullable == "False";
    if (field.type == "integer") {
        rule.kind = Kind::kInteger;
    } else if (field.type.find("varchar") != std::string::npos) {
        rule.kind = Kind::kVarchar;
        rule.limit = firstNumber(field.type);
    }
    return rule;
}

std::uint64_t EventRules::lengthOf(Member& member) {
    if (!member.length) {
        member.length = member.value.compactLength();
    }
    return *member.length;
}

void EventRules::readValues(JsonValue values) {
    members_.assign(names_.size(), Member());
    // Members mostly come in the order of the fields, which saves looking for them.
    std::size_t expected = 0;
    values.forEachMember([this, &expected](std::string_view name, JsonValue value) {
        if (expected == names_.size() || names_[expected] != name) {
            const auto slot = slots_.find(name);
            if (slot == slots_.end()) {
                return;
            }
            expected = slot->second;
        }
        members_[expected++].value = value;
    });
}

std::optional<std::string_view> EventRules::brokenField(JsonValue values) {
    readValues(values);
    // A varchar type without digits is measured by the last limit that a field before it has set.
    std::uint64_t limit = kUnlimited;
    for (const Rule& rule : rules_) {
        Member& member = members_[rule.slot];
        const JsonValue value = member.value;
        if (rule.required && (!value || value.isNull())) {
            return names_[rule.slot];
        }
        if (!value) {
            continue;
        }
        if (rule.kind == Kind::kInteger && !beginsWithInteger(value)) {
            return names_[rule.slot];
        }
        if (rule.kind == Kind::kVarchar) {
            limit = rule.limit.value_or(limit);
            // The first and the last character, a string's quotes, are not counted.
            if (lengthOf(member) > limit + 2) {
                return names_[rule.slot];
            }
        }
    }
    return std::nullopt;
}

}  // namespace Orvel::Service
