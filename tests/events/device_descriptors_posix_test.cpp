/// The device's identity when no file can be opened.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "events/device_identity.h"
#include "orvel/analytics/hresult_error.h"

namespace {

using Orvel::Analytics::hresult_error;
using Orvel::Analytics::Events::collectDeviceIdentity;

TEST(DeviceIdentityWithoutDescriptors, IsRaisedRatherThanAnother) {
    const auto usual = collectDeviceIdentity();
    // A sanitizer that has not seen the class yet needs descriptors to look at it.
    EXPECT_EQ(hresult_error(-1, "").code(), -1);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_THROW(static_cast<void>(collectDeviceIdentity()), hresult_error);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(collectDeviceIdentity(), usual);
}

}  // namespace
