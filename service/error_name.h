#ifndef ORVEL_SERVICE_ERROR_NAME_H
#define ORVEL_SERVICE_ERROR_NAME_H

#include <exception>
#include <string_view>

/// @file
/// The names by which the service tells a client what was wrong.

namespace Orvel::Service {

/// One of the names in `ErrorNames`.
using ErrorName = std::string_view;

namespace ErrorNames {

inline constexpr ErrorName kApplicationIsNotConnected = "ApplicationIsNotConnected";
inline constexpr ErrorName kApplicationIsNotAuthorizedToConnect =
    "ApplicationIsNotAuthorizedToConnect";
inline constexpr ErrorName kApplicationPipeNotMatch = "ApplicationPipeNotMatch";
inline constexpr ErrorName kMalformedOrUnknownMessage = "MalformedOrUnknownMessage";
inline constexpr ErrorName kMalformedJson = "MalformedJson";
inline constexpr ErrorName kMalformedDataclass = "MalformedDataclass";
inline constexpr ErrorName kDataclassIsNotAuthorizedForThisApplication =
    "DataclassIsNotAuthorizedForThisApplication";
inline constexpr ErrorName kInvalidDataclassRegistration = "InvalidDataclassRegistration";
inline constexpr ErrorName kErrorIODataclassRegistration = "ErrorIODataclassRegistration";
inline constexpr ErrorName kUnregisteredDataclass = "UnregisteredDataclass";
inline constexpr ErrorName kDataclassNotFollowRegisteredFormat =
    "DataclassNotFollowRegisteredFormat";
inline constexpr ErrorName kDateTimeFieldIsRequired = "DateTimeFieldIsRequired";
inline constexpr ErrorName kInvalidDatetimeFormat = "InvalidDatetimeFormat";
inline constexpr ErrorName kQuotaExceeded = "QuotaExceeded";
inline constexpr ErrorName kNotRightAccessToWrite = "NotRightAccessToWrite";
inline constexpr ErrorName kUnableToSetConsentForManagedDevice =
    "UnableToSetConsentForManagedDevice";
inline constexpr ErrorName kGenericError = "GenericError";

}  // namespace ErrorNames

/// Thrown where a command is found to be one that the service refuses as a whole.
class Refusal : public std::exception {
  public:
    explicit Refusal(ErrorName name) : name_(name) {}

    ErrorName name() const { return name_; }
    /// The names are literals, so their text ends where a C string ends.
    const char* what() const noexcept override { return name_.data(); }

  private:
    ErrorName name_;
};

}  // namespace Orvel::Service

#endif
