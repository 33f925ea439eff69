/// The device's identity out of the platform's own classes.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>

#include "events/device_identity.h"
#include "orvel/analytics/hresult_error.h"
#include "support/raised_status.h"
#include "support/session_access.h"
#include "windows/runtime_fixture.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::Events::collectDeviceIdentity;
using Orvel::TestSupport::construct;
using Orvel::TestSupport::OnStandIn;
using Orvel::TestSupport::raisedStatus;

class Device : public OnStandIn {
  protected:
    Device() { runtime.setOperatingSystem(L"WINDOWS"); }

    WideString identityOf(std::wstring_view version) {
        runtime.setDeviceFamilyVersion(version);
        return collectDeviceIdentity();
    }
};

TEST_F(Device, UnpacksTheVersion) {
    EXPECT_EQ(identityOf(L"2814751015243250"), ORVEL_TEXT("WINDOWS 10.0.19045.3570"));
    EXPECT_EQ(identityOf(L"0"), ORVEL_TEXT("WINDOWS 0.0.0.0"));
    EXPECT_EQ(identityOf(L"123abc"), ORVEL_TEXT("WINDOWS 0.0.0.123"));
    EXPECT_EQ(identityOf(L"9223372036854775807"), ORVEL_TEXT("WINDOWS 32767.65535.65535.65535"));
}

TEST_F(Device, BeginsWithTheSpaceWhenTheNameIsEmpty) {
    runtime.setOperatingSystem(L"");
    EXPECT_EQ(identityOf(L"1"), ORVEL_TEXT(" 0.0.0.1"));
}

TEST_F(Device, KeepsEveryUnitOfTheName) {
    const std::wstring name = std::wstring(L"a\0b", 3) + L'\xD800';
    runtime.setOperatingSystem(name);
    EXPECT_EQ(identityOf(L"1"), name + L" 0.0.0.1");
}

TEST_F(Device, RaisesForAVersionThatIsNoNumber) {
    for (const std::wstring_view version : {L"", L"abc", L"v10"}) {
        try {
            identityOf(version);
            FAIL() << "nothing was raised";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "invalid stoll argument");
        }
    }
}

TEST_F(Device, RaisesForAVersionBeyond64Bits) {
    for (const std::wstring_view version : {L"9223372036854775808", L"99999999999999999999999"}) {
        try {
            identityOf(version);
            FAIL() << "nothing was raised";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "stoll argument out of range");
        }
    }
}

TEST_F(Device, AnUnreadableVersionLeavesTheSessionsConstructor) {
    runtime.setDeviceFamilyVersion(L"x");
    EXPECT_THROW(construct(), std::invalid_argument);
    runtime.setDeviceFamilyVersion(L"9223372036854775808");
    EXPECT_THROW(construct(), std::out_of_range);
}

TEST_F(Device, IsAskedAnewForEachSession) {
    construct();
    construct();
    EXPECT_EQ(runtime.count("EasClientDeviceInformation.ActivateInstance"), 2U);
    EXPECT_EQ(runtime.count("AnalyticsInfo.Factory"), 1U);
    EXPECT_EQ(runtime.count("EasClientDeviceInformation.Factory"), 1U);
}

TEST_F(Device, ReadsNothingElseOfTheDevice) {
    collectDeviceIdentity();
    EXPECT_EQ(runtime.calls(),
              (std::vector<std::string>{
                  "AnalyticsInfo.Factory", "IActivationFactory.QueryInterface",
                  "IAgileObject.QueryInterface", "IAnalyticsInfoStatics.QueryInterface",
                  "IAnalyticsInfoStatics.get_VersionInfo",
                  "IAnalyticsVersionInfo.get_DeviceFamilyVersion",
                  "EasClientDeviceInformation.Factory", "IActivationFactory.QueryInterface",
                  "IAgileObject.QueryInterface", "EasClientDeviceInformation.ActivateInstance",
                  "IEasClientDeviceInformation.QueryInterface",
                  "IEasClientDeviceInformation.get_OperatingSystem"}));
}

class FailingDevice : public Device, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(, FailingDevice,
                         testing::Values("AnalyticsInfo.Factory",
                                         "IAnalyticsInfoStatics.QueryInterface",
                                         "IAnalyticsInfoStatics.get_VersionInfo",
                                         "IAnalyticsVersionInfo.get_DeviceFamilyVersion",
                                         "EasClientDeviceInformation.Factory",
                                         "EasClientDeviceInformation.ActivateInstance",
                                         "IEasClientDeviceInformation.QueryInterface",
                                         "IEasClientDeviceInformation.get_OperatingSystem"));

TEST_P(FailingDevice, IsRaised) {
    runtime.fail(GetParam(), 0x80070005, 1, 1);
    EXPECT_THROW(collectDeviceIdentity(), Orvel::Analytics::hresult_access_denied);
    runtime.fail(GetParam(), 0x8007000E, 1, 1);
    EXPECT_THROW(collectDeviceIdentity(), std::bad_alloc);
    runtime.fail(GetParam(), 0x80040154, 1, 1);
    EXPECT_EQ(raisedStatus(collectDeviceIdentity), 0x80040154U);
    EXPECT_EQ(runtime.liveObjects(), 0);
    EXPECT_NO_THROW(collectDeviceIdentity());
}

TEST_P(FailingDevice, LeavesTheSessionsConstructor) {
    runtime.fail(GetParam(), 0x80070005, 1, 1);
    EXPECT_THROW(construct(), Orvel::Analytics::hresult_access_denied);
    runtime.fail(GetParam(), 0x80040154, 1, 1);
    EXPECT_EQ(raisedStatus(construct), 0x80040154U);
    EXPECT_EQ(runtime.liveObjects(), 0);
    EXPECT_NO_THROW(construct());
}

}  // namespace
