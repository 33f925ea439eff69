#include "events/device_identity.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "orvel/analytics/hresult_error.h"
#include "orvel/analytics/session.h"
#include "support/fake_device.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::Events::collectDeviceIdentity;
using Orvel::TestSupport::FakeDevice;
using Orvel::TestSupport::fakeDevice;

class CollectDeviceIdentity : public testing::Test {
  protected:
    ~CollectDeviceIdentity() override { fakeDevice() = FakeDevice(); }

    static WideString identityOf(WideString version) {
        fakeDevice().version = std::move(version);
        return collectDeviceIdentity();
    }
};

TEST_F(CollectDeviceIdentity, UnpacksTheVersion) {
    EXPECT_EQ(identityOf(ORVEL_TEXT("2814751015243250")), ORVEL_TEXT("OS 10.0.19045.3570"));
    EXPECT_EQ(identityOf(ORVEL_TEXT("0")), ORVEL_TEXT("OS 0.0.0.0"));
    EXPECT_EQ(identityOf(ORVEL_TEXT("9223372036854775807")),
              ORVEL_TEXT("OS 32767.65535.65535.65535"));
}

TEST_F(CollectDeviceIdentity, TakesANegativeVersionForItsBits) {
    EXPECT_EQ(identityOf(ORVEL_TEXT("-1")), ORVEL_TEXT("OS 65535.65535.65535.65535"));
    EXPECT_EQ(identityOf(ORVEL_TEXT("-9223372036854775808")), ORVEL_TEXT("OS 32768.0.0.0"));
}

TEST_F(CollectDeviceIdentity, IgnoresWhatFollowsTheDigits) {
    EXPECT_EQ(identityOf(ORVEL_TEXT("123abc")), ORVEL_TEXT("OS 0.0.0.123"));
    EXPECT_EQ(identityOf(ORVEL_TEXT(" +123")), ORVEL_TEXT("OS 0.0.0.123"));
}

TEST_F(CollectDeviceIdentity, RaisesForAVersionThatIsNoNumber) {
    for (const WideString& version : {WideString(), WideString(ORVEL_TEXT("abc"))}) {
        try {
            identityOf(version);
            FAIL() << "nothing was raised";
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "invalid stoll argument");
        }
    }
}

TEST_F(CollectDeviceIdentity, RaisesForAVersionBeyond64Bits) {
    try {
        identityOf(ORVEL_TEXT("9223372036854775808"));
        FAIL() << "nothing was raised";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "stoll argument out of range");
    }
}

TEST_F(CollectDeviceIdentity, BeginsWithTheSpaceWhenTheNameIsEmpty) {
    fakeDevice().name.clear();
    EXPECT_EQ(identityOf(ORVEL_TEXT("1")), ORVEL_TEXT(" 0.0.0.1"));
}

TEST_F(CollectDeviceIdentity, LetsThePlatformsErrorLeaveTheSessionsConstructor) {
    const auto construct = [] { AnalyticsSession(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"), {}, {}); };
    fakeDevice().nameFails = 0x80040154;
    EXPECT_THROW(construct(), Orvel::Analytics::hresult_error);
    fakeDevice().versionFails = 0x80070005;
    EXPECT_THROW(construct(), Orvel::Analytics::hresult_access_denied);
    fakeDevice() = FakeDevice();
    fakeDevice().version = ORVEL_TEXT("x");
    EXPECT_THROW(construct(), std::invalid_argument);
}

}  // namespace
