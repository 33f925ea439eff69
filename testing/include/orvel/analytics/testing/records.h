#ifndef ORVEL_ANALYTICS_TESTING_RECORDS_H
#define ORVEL_ANALYTICS_TESTING_RECORDS_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "orvel/analytics/processing_permissions.h"
#include "orvel/analytics/testing/value.h"

/// @file
/// What a `Service` has recorded. Plain values that own their texts, which are UTF-8; an unpaired
/// surrogate of what was sent is U+FFFD.

namespace Orvel::Analytics::Testing {

/// A field of a data class as it was registered.
struct RegisteredField {
    /// The field's identifier.
    std::string id;
    /// The field's name.
    std::string name;
    /// Whether the field may be null, in the application's own words.
    std::string nullable;
    /// The field's type.
    std::string type;

    /// Whether all texts are equal.
    bool operator==(const RegisteredField&) const = default;
};

/// One `RegisterDataClass` that arrived.
struct Registration {
    /// The application that registered the data class.
    std::string application;
    /// The data class's name.
    std::string name;
    /// The data class's identifier.
    std::string id;
    /// The data class's version.
    std::string version;
    /// The fields in their order.
    std::vector<RegisteredField> fields;
    /// Whether the answer was a success.
    bool accepted = false;
};

/// An event of a batch.
struct Event {
    /// The identifier of the event's data class.
    std::string dataClass;
    /// The values that the application gave: an object without the two members that the library
    /// stamps on it.
    Value values;
    /// The stamped time ("DT") in local wall-clock time, such as `20240131T235959`; empty when the
    /// data class's time was 0 or less.
    std::string time;
    /// The stamped version ("V"): that of the data class registered last.
    std::string version;
};

/// Writes an event in one line, which is how GoogleTest prints one.
inline std::ostream& operator<<(std::ostream& out, const Event& event) {
    return out << event.dataClass << ' ' << event.values << ", time " << Value(event.time)
               << ", version " << Value(event.version);
}

/// One `SendEvents` that arrived.
struct Batch {
    /// The application's name ("1").
    std::string application;
    /// The application's version ("2").
    std::string applicationVersion;
    /// The session's identifier ("3"), another one for every batch.
    std::string sessionId;
    /// The session's counter ("4").
    std::int64_t sessionCounter = 0;
    /// The user's identifier ("5").
    std::string userId;
    /// The device ("6").
    std::string deviceId;
    /// The environment ("7").
    std::string environment;
    /// The session's start ("DT") in local wall-clock time.
    std::string started;
    /// The version of the data class registered last ("V").
    std::string version;
    /// The events in the order in which they were collected.
    std::vector<Event> events;
    /// Whether the answer was a success.
    bool accepted = false;
};

/// One `SetConsent` that arrived.
struct ConsentChange {
    /// The application that changed the consent.
    std::string application;
    /// What it asked for.
    ProcessingPermissions permissions;
    /// Whether the answer was a success, and the record was changed.
    bool accepted = false;
};

}  // namespace Orvel::Analytics::Testing

#endif
