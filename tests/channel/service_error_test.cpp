#include "channel/service_error.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using Orvel::WideString;
using Orvel::WideStringView;
using Orvel::Analytics::Channel::mapServiceErrorName;
using Orvel::Analytics::Emitters::AnalyticsResult;

int mapped(WideStringView text) { return static_cast<int>(mapServiceErrorName(text)); }

TEST(MapServiceErrorName, GivesEachNameItsNumber) {
    const std::map<WideString, int> numbers = {
        {ORVEL_TEXT("ApplicationIsNotAuthorizedToConnect"), 11},
        {ORVEL_TEXT("ApplicationIsNotConnected"), 8},
        {ORVEL_TEXT("ApplicationAlreadyConnectedInOtherPipe"), 9},
        {ORVEL_TEXT("ApplicationPipeNotMatch"), 10},
        {ORVEL_TEXT("DataclassIsNotAuthorizedForThisApplication"), 12},
        {ORVEL_TEXT("InvalidDataclassRegistration"), 13},
        {ORVEL_TEXT("MalformedDataclass"), 14},
        {ORVEL_TEXT("MalformedJson"), 15},
        {ORVEL_TEXT("ErrorIODataclassRegistration"), 25},
        {ORVEL_TEXT("InvalidDatetimeFormat"), 26},
        {ORVEL_TEXT("DateTimeFieldIsRequired"), 27},
        {ORVEL_TEXT("UnregisteredDataclass"), 16},
        {ORVEL_TEXT("DataclassNotFollowRegisteredFormat"), 17},
        {ORVEL_TEXT("NotRightAccessToWrite"), 18},
        {ORVEL_TEXT("MalformedOrUnknownMessage"), 20},
        {ORVEL_TEXT("GenericError"), 1},
        {ORVEL_TEXT("ApplicationNotSigned"), 23},
        {ORVEL_TEXT("UnableToSetConsentForManagedDevice"), 19},
        {ORVEL_TEXT("QuotaExceeded"), 24},
    };
    for (const auto& [name, number] : numbers) {
        EXPECT_EQ(mapped(name), number) << testing::PrintToString(name);
    }
}

TEST(MapServiceErrorName, LooksForTheNameAnywhereInTheText) {
    EXPECT_EQ(mapped(ORVEL_TEXT("ErrorCode :QuotaExceeded")), 24);
    EXPECT_EQ(mapped(ORVEL_TEXT("QuotaExceeded\"")), 24);
}

TEST(MapServiceErrorName, TellsCaseApart) { EXPECT_EQ(mapped(ORVEL_TEXT("quotaexceeded")), 1); }

TEST(MapServiceErrorName, TakesTheNameThatComesFirstInTheTableNotInTheText) {
    EXPECT_EQ(mapped(ORVEL_TEXT("MalformedJson MalformedDataclass")), 14);
    EXPECT_EQ(mapped(ORVEL_TEXT("QuotaExceeded GenericError")), 1);
}

TEST(MapServiceErrorName, GivesGenericErrorForAnyOtherText) {
    EXPECT_EQ(mapped(ORVEL_TEXT("GenericError")), 1);
    EXPECT_EQ(mapped(ORVEL_TEXT("NoSuchError")), 1);
    EXPECT_EQ(mapped(ORVEL_TEXT("")), 1);
}

TEST(AnalyticsResult, HasFixedNumbers) {
    EXPECT_EQ(static_cast<int>(AnalyticsResult::Success), 0);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::GenericError), 1);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::EmptyEvent), 2);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::EndTimeBeforeStartTime), 6);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::StartTimeInFuture), 7);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::ApplicationIsNotConnected), 8);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::ServiceUnavailable), 22);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::FieldValueTooLong), 29);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::NullValueNotAllowed), 31);
    EXPECT_EQ(static_cast<int>(AnalyticsResult::AccessDenied), 32);
}

}  // namespace
