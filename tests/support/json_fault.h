#ifndef ORVEL_SUPPORT_JSON_FAULT_H
#define ORVEL_SUPPORT_JSON_FAULT_H

#include <cstdint>
#include <optional>
#include <vector>

#include "orvel/analytics/text.h"

/// A JSON backend that fails where a test says. It knows no JSON: every text is an object with one
/// member, every member is present, and every value serialises to the text that the test chose.
namespace Orvel::TestSupport {

/// The operations of the JSON layer.
enum class JsonOperation {
    NewObject,
    NewArray,
    ParseObject,
    StringValue,
    NumberValue,
    SerialisedObject,
    SetNamedValue,
    GetNamedString,
    GetNamedBoolean,
    GetNamedObject,
    GetNamedArray,
    ObjectSize,
    GetView,
    HasKey,
    Lookup,
    Append,
    ArraySize,
    GetAt,
    Stringify,
};

/// What the backend does. One for each test.
struct JsonFault {
    JsonFault();
    JsonFault(const JsonFault&) = delete;
    JsonFault& operator=(const JsonFault&) = delete;
    ~JsonFault();

    /// This operation raises `status`, from its `failingCall`-th call on, counted from 1.
    std::optional<JsonOperation> failing;
    int failingCall = 1;
    std::uint32_t status = 0x80004005;  // E_FAIL

    /// What `stringify` gives.
    WideString serialised = ORVEL_TEXT("\"text\"");
    /// Whether a lookup yields no value object, as a platform may do for a null.
    bool lookupYieldsNothing = false;

    /// Every operation that was called, in order.
    std::vector<JsonOperation> calls;
};

}  // namespace Orvel::TestSupport

#endif
