#include "cli/result_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace Orvel::Tool {

namespace {

using Analytics::Emitters::AnalyticsResult;

struct Entry {
    AnalyticsResult result;
    std::string_view name;
    std::string_view words;
};

#define ORVEL_RESULT(name, words) \
    Entry { AnalyticsResult::name, #name, words }

constexpr std::array kEntries{
    ORVEL_RESULT(Success, "accepted"),
    ORVEL_RESULT(GenericError, "the service could not be reached or gave no known reason"),
    ORVEL_RESULT(EmptyEvent, "the event is empty"),
    ORVEL_RESULT(EndTimeBeforeStartTime, "the end lies before the start"),
    ORVEL_RESULT(StartTimeInFuture, "the start lies in the future"),
    ORVEL_RESULT(ApplicationIsNotConnected, "the application has not connected"),
    ORVEL_RESULT(ApplicationAlreadyConnectedInOtherPipe, "the application is connected elsewhere"),
    ORVEL_RESULT(ApplicationPipeNotMatch, "the command names another application"),
    ORVEL_RESULT(ApplicationIsNotAuthorizedToConnect, "the application may not connect"),
    ORVEL_RESULT(DataclassIsNotAuthorizedForThisApplication,
                 "the application may not report this data class"),
    ORVEL_RESULT(InvalidDataclassRegistration,
                 "this data class and version is registered with other fields"),
    ORVEL_RESULT(MalformedDataclass, "the data class lacks members"),
    ORVEL_RESULT(MalformedJson, "not a JSON object with members"),
    ORVEL_RESULT(UnregisteredDataclass, "the data class is not registered"),
    ORVEL_RESULT(DataclassNotFollowRegisteredFormat,
                 "the fields do not follow the registered data class"),
    ORVEL_RESULT(NotRightAccessToWrite, "data must not be stored"),
    ORVEL_RESULT(UnableToSetConsentForManagedDevice,
                 "the device is managed, so consent cannot be changed here"),
    ORVEL_RESULT(MalformedOrUnknownMessage, "the service does not know the command"),
    ORVEL_RESULT(ServiceUnavailable, "the service is not running"),
    ORVEL_RESULT(ApplicationNotSigned, "the application is not signed"),
    ORVEL_RESULT(QuotaExceeded, "the application has used up its quota"),
    ORVEL_RESULT(ErrorIODataclassRegistration, "the service could not store the registration"),
    ORVEL_RESULT(InvalidDatetimeFormat, "the time of an event is not a timestamp"),
    ORVEL_RESULT(DateTimeFieldIsRequired, "the time of an event is missing"),
    ORVEL_RESULT(FieldValueTooLong, "the value of a text field is longer than the field allows"),
    ORVEL_RESULT(NullValueNotAllowed, "a field that must have a value is null"),
    ORVEL_RESULT(AccessDenied, "this user may not connect to the service"),
};

#undef ORVEL_RESULT

constexpr Entry kUnknown{AnalyticsResult::GenericError, "Unknown", "a result without a name"};

const Entry& find(AnalyticsResult result) {
    const auto* const found =
        std::find_if(kEntries.begin(), kEntries.end(),
                     [&](const Entry& entry) { return entry.result == result; });
    return found == kEntries.end() ? kUnknown : *found;
}

}  // namespace

std::string_view resultName(AnalyticsResult result) { return find(result).name; }

std::string_view resultWords(AnalyticsResult result) { return find(result).words; }

std::string describeResult(AnalyticsResult result) {
    return fmt::format("{} ({}): {}", resultName(result), static_cast<std::int32_t>(result),
                       resultWords(result));
}

}  // namespace Orvel::Tool
