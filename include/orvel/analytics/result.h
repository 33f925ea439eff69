#ifndef ORVEL_ANALYTICS_RESULT_H
#define ORVEL_ANALYTICS_RESULT_H

#include <cstdint>

/// @file
/// The result codes of the public operations.

namespace Orvel::Analytics::Emitters {

/// What a public operation of `AnalyticsSession` returns. The numbers are fixed: an application may
/// store and compare them. 3, 4, 5, 21, 28 and 30 are given by no operation.
enum class AnalyticsResult : std::int32_t {
    /// The operation succeeded; also every reply of the service that reports no error.
    Success = 0,
    /// The service could not be reached or gave a name not listed here; or the value of an integer
    /// field does not begin with a number of 32 bits.
    GenericError = 1,
    /// `CollectEvent` was given an empty text.
    EmptyEvent = 2,
    /// `SetEndTime` was given a time before the session's start.
    EndTimeBeforeStartTime = 6,
    /// `SetStartTime` was given a time later than now.
    StartTimeInFuture = 7,
    /// The service: a command came before the application had connected.
    ApplicationIsNotConnected = 8,
    /// The service: the application is connected elsewhere.
    ApplicationAlreadyConnectedInOtherPipe = 9,
    /// The service: the command names another application than the connection.
    ApplicationPipeNotMatch = 10,
    /// The service: this application may not connect.
    ApplicationIsNotAuthorizedToConnect = 11,
    /// The service: this application may not report events of this data class.
    DataclassIsNotAuthorizedForThisApplication = 12,
    /// The service: the same data class and version is registered with other fields.
    InvalidDataclassRegistration = 13,
    /// The service: the registration lacks members that it must have.
    MalformedDataclass = 14,
    /// The text is not a JSON object, or is one without members; or the service said so.
    MalformedJson = 15,
    /// The service: the event's data class was not registered by this application.
    UnregisteredDataclass = 16,
    /// The service: the event's fields do not follow the registered data class.
    DataclassNotFollowRegisteredFormat = 17,
    /// The service: data must not be stored.
    NotRightAccessToWrite = 18,
    /// The service: the device is managed, so consent cannot be changed here.
    UnableToSetConsentForManagedDevice = 19,
    /// The service: the command is unknown or malformed.
    MalformedOrUnknownMessage = 20,
    /// `RegisterDataClass`: nobody serves the endpoint.
    ServiceUnavailable = 22,
    /// The service: the application is not signed.
    ApplicationNotSigned = 23,
    /// The service: the application has used up its quota.
    QuotaExceeded = 24,
    /// The service: the registration could not be stored.
    ErrorIODataclassRegistration = 25,
    /// The service: an event's "DT" is not a timestamp.
    InvalidDatetimeFormat = 26,
    /// The service: an event's "DT" is missing or empty.
    DateTimeFieldIsRequired = 27,
    /// The value of a varchar field is longer than the field allows.
    FieldValueTooLong = 29,
    /// A field that is not nullable is present without a value.
    NullValueNotAllowed = 31,
    /// `RegisterDataClass`: this user may not connect to the service.
    AccessDenied = 32,
};

}  // namespace Orvel::Analytics::Emitters

#endif
