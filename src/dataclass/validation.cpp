#include "dataclass/validation.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <optional>
#include <stdexcept>

#include "text/numbers.h"

namespace Orvel::Analytics::DataClass {
namespace {

using Emitters::AnalyticsResult;

constexpr WideStringView kInteger = ORVEL_TEXT("integer");
constexpr WideStringView kVarchar = ORVEL_TEXT("varchar");

bool mustHaveValue(const DataClassFieldInfo& field) {
    return field.nullable == ORVEL_TEXT("false") || field.nullable == ORVEL_TEXT("False");
}

bool beginsWithInteger(WideStringView serialised) {
    try {
        static_cast<void>(Text::toInt32(serialised));
        return true;
    } catch (const std::logic_error&) {
        return false;
    }
}

/// What remains of a serialised value without its first and last code unit: of a string, the text
/// between the quotation marks.
std::size_t measuredLength(const Json::Value& value) {
    constexpr std::size_t kQuotationMarks = 2;
    const std::size_t serialised = value.serialisedLength();
    return serialised - std::min(serialised, kQuotationMarks);
}

/// The rules of one event. The varchar limit is the pass's, not the field's: a type without digits
/// is held to the last limit seen.
class Pass {
  public:
    AnalyticsResult check(const DataClassFieldInfo& field, const Json::ObjectView& members) {
        if (!members.hasKey(field.id)) {
            return AnalyticsResult::Success;
        }
        const std::optional<Json::Value> value = members.lookup(field.id);
        if (!value) {
            return mustHaveValue(field) ? AnalyticsResult::NullValueNotAllowed
                                        : AnalyticsResult::Success;
        }
        if (field.type == kInteger) {
            return beginsWithInteger(value->stringify()) ? AnalyticsResult::Success
                                                         : AnalyticsResult::GenericError;
        }
        if (field.type.find(kVarchar) != WideString::npos) {
            return checkLength(field.type, *value);
        }
        return AnalyticsResult::Success;
    }

  private:
    AnalyticsResult checkLength(WideStringView type, const Json::Value& value) {
        const WideStringView digits = firstDigits(type);
        if (!digits.empty()) {
            limit_ = Text::toInt32(digits);
        }
        const std::size_t length = measuredLength(value);
        const bool fits = !limit_ || length <= static_cast<std::size_t>(*limit_);
        return fits ? AnalyticsResult::Success : AnalyticsResult::FieldValueTooLong;
    }

    std::optional<std::int32_t> limit_;
};

}  // namespace

AnalyticsResult validateValues(const Json::Object& values, BaseDataClass& dataClass) {
    if (values.size() == 0) {
        return AnalyticsResult::MalformedJson;
    }
    const Json::ObjectView members = values.getView();
    Pass pass;
    for (const DataClassFieldInfo& field : dataClass.getFields()) {
        const AnalyticsResult result = pass.check(field, members);
        if (result != AnalyticsResult::Success) {
            return result;
        }
    }
    return AnalyticsResult::Success;
}

WideStringView firstDigits(WideStringView type) noexcept {
    const auto isDigit = [](WideChar unit) { return unit >= '0' && unit <= '9'; };
    const auto begin = std::find_if(type.begin(), type.end(), isDigit);
    const auto end = std::find_if_not(begin, type.end(), isDigit);
    return {begin, end};
}

}  // namespace Orvel::Analytics::DataClass
