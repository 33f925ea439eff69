#include "channel/service_error.h"

#include <algorithm>
#include <array>

namespace Orvel::Analytics::Channel {
namespace {

using Emitters::AnalyticsResult;

struct ServiceError {
    WideStringView name;
    AnalyticsResult result;
};

constexpr std::array kServiceErrors = {
    ServiceError{ORVEL_TEXT("ApplicationIsNotAuthorizedToConnect"),
                 AnalyticsResult::ApplicationIsNotAuthorizedToConnect},
    ServiceError{ORVEL_TEXT("ApplicationIsNotConnected"),
                 AnalyticsResult::ApplicationIsNotConnected},
    ServiceError{ORVEL_TEXT("ApplicationAlreadyConnectedInOtherPipe"),
                 AnalyticsResult::ApplicationAlreadyConnectedInOtherPipe},
    ServiceError{ORVEL_TEXT("ApplicationPipeNotMatch"), AnalyticsResult::ApplicationPipeNotMatch},
    ServiceError{ORVEL_TEXT("DataclassIsNotAuthorizedForThisApplication"),
                 AnalyticsResult::DataclassIsNotAuthorizedForThisApplication},
    ServiceError{ORVEL_TEXT("InvalidDataclassRegistration"),
                 AnalyticsResult::InvalidDataclassRegistration},
    ServiceError{ORVEL_TEXT("MalformedDataclass"), AnalyticsResult::MalformedDataclass},
    ServiceError{ORVEL_TEXT("MalformedJson"), AnalyticsResult::MalformedJson},
    ServiceError{ORVEL_TEXT("ErrorIODataclassRegistration"),
                 AnalyticsResult::ErrorIODataclassRegistration},
    ServiceError{ORVEL_TEXT("InvalidDatetimeFormat"), AnalyticsResult::InvalidDatetimeFormat},
    ServiceError{ORVEL_TEXT("DateTimeFieldIsRequired"), AnalyticsResult::DateTimeFieldIsRequired},
    ServiceError{ORVEL_TEXT("UnregisteredDataclass"), AnalyticsResult::UnregisteredDataclass},
    ServiceError{ORVEL_TEXT("DataclassNotFollowRegisteredFormat"),
                 AnalyticsResult::DataclassNotFollowRegisteredFormat},
    ServiceError{ORVEL_TEXT("NotRightAccessToWrite"), AnalyticsResult::NotRightAccessToWrite},
    ServiceError{ORVEL_TEXT("MalformedOrUnknownMessage"),
                 AnalyticsResult::MalformedOrUnknownMessage},
    ServiceError{ORVEL_TEXT("GenericError"), AnalyticsResult::GenericError},
    ServiceError{ORVEL_TEXT("ApplicationNotSigned"), AnalyticsResult::ApplicationNotSigned},
    ServiceError{ORVEL_TEXT("UnableToSetConsentForManagedDevice"),
                 AnalyticsResult::UnableToSetConsentForManagedDevice},
    ServiceError{ORVEL_TEXT("QuotaExceeded"), AnalyticsResult::QuotaExceeded},
};

}  // namespace

AnalyticsResult mapServiceErrorName(WideStringView text) noexcept {
    const auto known = std::find_if(
        kServiceErrors.begin(), kServiceErrors.end(),
        [&](const ServiceError& error) { return text.find(error.name) != WideStringView::npos; });
    return known == kServiceErrors.end() ? AnalyticsResult::GenericError : known->result;
}

}  // namespace Orvel::Analytics::Channel
