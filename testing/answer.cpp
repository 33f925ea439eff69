#include "orvel/analytics/testing/answer.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "testing/text.h"

namespace Orvel::Analytics::Testing {
namespace {

using Emitters::AnalyticsResult;

struct ServiceError {
    AnalyticsResult result;
    std::string_view name;
};

#define ORVEL_SERVICE_ERROR(name) \
    ServiceError { AnalyticsResult::name, #name }

constexpr std::array kServiceErrors = {
    ORVEL_SERVICE_ERROR(GenericError),
    ORVEL_SERVICE_ERROR(ApplicationIsNotConnected),
    ORVEL_SERVICE_ERROR(ApplicationAlreadyConnectedInOtherPipe),
    ORVEL_SERVICE_ERROR(ApplicationPipeNotMatch),
    ORVEL_SERVICE_ERROR(ApplicationIsNotAuthorizedToConnect),
    ORVEL_SERVICE_ERROR(DataclassIsNotAuthorizedForThisApplication),
    ORVEL_SERVICE_ERROR(InvalidDataclassRegistration),
    ORVEL_SERVICE_ERROR(MalformedDataclass),
    ORVEL_SERVICE_ERROR(MalformedJson),
    ORVEL_SERVICE_ERROR(UnregisteredDataclass),
    ORVEL_SERVICE_ERROR(DataclassNotFollowRegisteredFormat),
    ORVEL_SERVICE_ERROR(NotRightAccessToWrite),
    ORVEL_SERVICE_ERROR(UnableToSetConsentForManagedDevice),
    ORVEL_SERVICE_ERROR(MalformedOrUnknownMessage),
    ORVEL_SERVICE_ERROR(ApplicationNotSigned),
    ORVEL_SERVICE_ERROR(QuotaExceeded),
    ORVEL_SERVICE_ERROR(ErrorIODataclassRegistration),
    ORVEL_SERVICE_ERROR(InvalidDatetimeFormat),
    ORVEL_SERVICE_ERROR(DateTimeFieldIsRequired),
};

#undef ORVEL_SERVICE_ERROR

}  // namespace

Answer Answer::success() { return {}; }

Answer Answer::error(AnalyticsResult result) {
    const auto found =
        std::find_if(kServiceErrors.begin(), kServiceErrors.end(),
                     [result](const ServiceError& error) { return error.result == result; });
    if (found == kServiceErrors.end()) {
        throw std::invalid_argument("no service names the result " +
                                    std::to_string(static_cast<int>(result)));
    }
    return error(found->name);
}

Answer Answer::error(std::string_view name) {
    Answer answer;
    answer.kind_ = Kind::Error;
    answer.text_ = wideOf(name);
    return answer;
}

Answer Answer::status(std::int32_t status) {
    if (status == 0) {
        throw std::invalid_argument("0 is the status of a success");
    }
    Answer answer;
    answer.kind_ = Kind::Status;
    answer.status_ = status;
    return answer;
}

Answer Answer::silence() {
    Answer answer;
    answer.kind_ = Kind::Silence;
    return answer;
}

Answer Answer::text(WideString reply) {
    Answer answer;
    answer.kind_ = Kind::Text;
    answer.text_ = std::move(reply);
    return answer;
}

}  // namespace Orvel::Analytics::Testing
