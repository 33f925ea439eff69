#ifndef ORVEL_ANALYTICS_TYPED_EVENT_H
#define ORVEL_ANALYTICS_TYPED_EVENT_H

#include <cstddef>
#include <list>
#include <span>
#include <vector>

#include "orvel/analytics/data_class.h"
#include "orvel/analytics/json_text.h"
#include "orvel/analytics/text.h"
#include "orvel/analytics/typed_value.h"  // IWYU pragma: export

/// @file
/// What the classes that `orvel-analytics generate` writes are made of.

/// @namespace Orvel::Analytics::TypedEvents
/// What generated classes are made of, and the values that their events take.

namespace Orvel::Analytics::TypedEvents {

/// A wide literal as a text, whatever characters it holds.
template <std::size_t Size>
constexpr WideStringView literal(const WideChar (&text)[Size]) noexcept {
    return {text, Size - 1};
}

/// The texts of a field of a data class; somebody else owns them.
struct Field {
    /// As in `DataClassFieldInfo`.
    WideStringView id;
    /// As in `DataClassFieldInfo`.
    WideStringView name;
    /// As in `DataClassFieldInfo`.
    WideStringView type;
    /// As in `DataClassFieldInfo`.
    WideStringView nullable;
};

/// The fields in the form that `getFields` returns. @throws std::bad_alloc
[[nodiscard]] inline std::list<DataClass::DataClassFieldInfo> fieldList(
    std::span<const Field> fields) {
    std::list<DataClass::DataClassFieldInfo> list;
    for (const Field& field : fields) {
        DataClass::DataClassFieldInfo& info = list.emplace_back();
        info.name = field.name;
        info.id = field.id;
        info.type = field.type;
        info.auxValue = 0;
        info.nullable = field.nullable;
    }
    return list;
}

/// The values of one event, each in JSON and in a place of its own.
class EventValues {
  public:
    /// @param places the number of values that there can be.
    explicit EventValues(std::size_t places) : values_(places) {}

    /// Sets a value, in place of one that was there.
    /// @param place from 0 to the number of places, exclusively.
    /// @param value a `Text`, `Integer` or `Value`.
    /// @throws std::invalid_argument when it is a text that is not well-formed.
    /// @throws std::bad_alloc, std::length_error
    template <typename T>
    void set(std::size_t place, const T& value) {
        values_[place] = value.json();
    }

    /// The event as `CollectEvent` takes it: one JSON object of the values that were set.
    /// @param ids the name of each place's member, well-formed.
    /// @throws std::bad_alloc, std::length_error
    [[nodiscard]] WideString text(std::span<const WideStringView> ids) const {
        WideString json;
        for (std::size_t place = 0; place < values_.size(); ++place) {
            if (!values_[place].empty()) {
                json += json.empty() ? ORVEL_TEXT('{') : ORVEL_TEXT(',');
                json += JsonText::string(ids[place]) + ORVEL_TEXT(':');
                json += values_[place];
            }
        }
        json += json.empty() ? ORVEL_TEXT("{}") : ORVEL_TEXT("}");
        return json;
    }

  private:
    std::vector<WideString> values_;
};

}  // namespace Orvel::Analytics::TypedEvents

#endif
