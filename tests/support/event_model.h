#ifndef ORVEL_SUPPORT_EVENT_MODEL_H
#define ORVEL_SUPPORT_EVENT_MODEL_H

#include <cstdint>
#include <list>
#include <optional>
#include <string>

#include "orvel/analytics/data_class.h"
#include "orvel/analytics/result.h"
#include "support/plain_json.h"

/// The rules for events once more, written plainly and on another JSON library, to hold the
/// library's own against.
namespace Orvel::TestSupport {

/// How deep an event may nest.
inline constexpr std::size_t kDeepestEvent = 1024;

/// What becomes of an event.
struct ModelVerdict {
    /// Nothing when a varchar type's length is beyond 32 bits, which is raised.
    std::optional<Analytics::Emitters::AnalyticsResult> result;
    /// The values of an event that parses.
    PlainJson values;
};

[[nodiscard]] ModelVerdict judgeByModel(
    WideStringView event, const std::list<Analytics::DataClass::DataClassFieldInfo>& fields);

/// Whether a value's text begins with a number of 32 bits.
[[nodiscard]] bool isIntegerValue(const PlainJson& value);

/// The number that the first digits of a type make, which may well be beyond 32 bits.
[[nodiscard]] std::optional<std::int64_t> lengthInType(const std::string& type);

/// The length that is held against it.
[[nodiscard]] std::int64_t measuredLength(const PlainJson& value);

/// The text in UTF-8, or nothing when it is ill-formed.
[[nodiscard]] std::optional<std::string> wellFormed(WideStringView text);

}  // namespace Orvel::TestSupport

#endif
