#include "support/event_model.h"

#include <cstdint>
#include <cstdlib>

namespace Orvel::TestSupport {
namespace {

using Analytics::DataClass::DataClassFieldInfo;
using Analytics::Emitters::AnalyticsResult;
using Kind = PlainJson::Kind;

constexpr std::int64_t kLargest = INT32_MAX;
constexpr std::int64_t kSmallest = INT32_MIN;

/// The number at the beginning of a text; one with more than 64 bits is the end of their range.
std::int64_t leadingNumber(const std::string& text) {
    return std::strtoll(text.c_str(), nullptr, 10);
}

void appendUtf8(std::string& utf8, std::uint32_t point) {
    const auto byte = [&utf8](std::uint32_t bits) {
        utf8 += static_cast<char>(static_cast<unsigned char>(bits));
    };
    if (point < 0x80) {
        byte(point);
        return;
    }
    const unsigned trailing = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    constexpr std::uint32_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
    byte(kFirst[trailing] | (point >> (6 * trailing)));
    for (unsigned left = trailing; left > 0; --left) {
        byte(0x80 | ((point >> (6 * (left - 1))) & 0x3F));
    }
}

struct Lengths {
    std::optional<std::int64_t> limit;

    /// What a varchar field's rule gives; nothing when it raises.
    std::optional<AnalyticsResult> check(const std::string& type, const PlainJson& value) {
        if (const auto number = lengthInType(type)) {
            if (*number > kLargest) {
                return std::nullopt;
            }
            limit = number;
        }
        return limit && measuredLength(value) > *limit ? AnalyticsResult::FieldValueTooLong
                                                       : AnalyticsResult::Success;
    }
};

/// The first rule that the values break, on a platform whose JSON null is a value.
std::optional<AnalyticsResult> judgeValues(const PlainJson& values,
                                           const std::list<DataClassFieldInfo>& fields) {
    Lengths lengths;
    for (const DataClassFieldInfo& field : fields) {
        const auto id = wellFormed(field.id);
        const PlainJson* const value = id ? values.member(*id) : nullptr;
        if (value == nullptr) {
            continue;
        }
        std::optional<AnalyticsResult> result = AnalyticsResult::Success;
        if (field.type == ORVEL_TEXT("integer")) {
            result =
                isIntegerValue(*value) ? AnalyticsResult::Success : AnalyticsResult::GenericError;
        } else if (field.type.find(ORVEL_TEXT("varchar")) != WideString::npos) {
            std::string type;
            for (const WideChar unit : field.type) {
                type += unit < 0x80 ? static_cast<char>(unit) : '?';
            }
            result = lengths.check(type, *value);
        }
        if (result != AnalyticsResult::Success) {
            return result;
        }
    }
    return AnalyticsResult::Success;
}

}  // namespace

bool isIntegerValue(const PlainJson& value) {
    if (value.kind != Kind::kNumber) {
        return false;
    }
    const std::int64_t number = leadingNumber(value.text);
    return number >= kSmallest && number <= kLargest;
}

std::optional<std::int64_t> lengthInType(const std::string& type) {
    const std::size_t digits = type.find_first_of("0123456789");
    return digits == std::string::npos ? std::nullopt
                                       : std::optional(leadingNumber(type.substr(digits)));
}

std::int64_t measuredLength(const PlainJson& value) {
    const std::size_t whole = plainLength(value);
    return whole < 2 ? 0 : static_cast<std::int64_t>(whole) - 2;
}

std::optional<std::string> wellFormed(WideStringView text) {
    std::string utf8;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::uint32_t point = text[at];
        if (point >= 0xD800 && point < 0xE000) {
            const std::uint32_t low = at + 1 < text.size() ? text[at + 1] : 0;
            if (point >= 0xDC00 || low < 0xDC00 || low >= 0xE000) {
                return std::nullopt;
            }
            point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
            ++at;
        }
        appendUtf8(utf8, point);
    }
    return utf8;
}

ModelVerdict judgeByModel(WideStringView event, const std::list<DataClassFieldInfo>& fields) {
    if (event.empty()) {
        return {AnalyticsResult::EmptyEvent, {}};
    }
    const auto text = wellFormed(event);
    const auto values = text ? readPlainJson(*text, kDeepestEvent) : std::nullopt;
    if (!values || values->kind != Kind::kObject || values->values.empty()) {
        return {AnalyticsResult::MalformedJson, {}};
    }
    return {judgeValues(*values, fields), *values};
}

}  // namespace Orvel::TestSupport
