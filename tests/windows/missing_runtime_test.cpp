/// A system that has no runtime at all: this program runs where combase.dll is not to be had.

#include <gtest/gtest.h>

#include "events/device_info.h"
#include "events/guid.h"
#include "json/json.h"
#include "orvel/analytics.h"
#include "support/raised_status.h"
#include "text/timestamp.h"

namespace {

using Orvel::Analytics::Json::Document;
using Orvel::TestSupport::raisedStatus;

/// HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND)
constexpr std::uint32_t kNoSuchModule = 0x8007007E;

void construct() { AnalyticsSession(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")); }

TEST(MissingRuntime, IsRaisedByWhateverNeedsIt) {
    Document document;
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.newObject()); }), kNoSuchModule);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.parseObject(ORVEL_TEXT("{}"))); }),
              kNoSuchModule);
    EXPECT_EQ(raisedStatus([&] { static_cast<void>(document.stringValue(ORVEL_TEXT("a"))); }),
              kNoSuchModule);
    EXPECT_EQ(raisedStatus([] { Orvel::Analytics::Events::deviceFamilyVersion(); }), kNoSuchModule);
    EXPECT_EQ(raisedStatus([] { Orvel::Analytics::Events::operatingSystemName(); }), kNoSuchModule);
    EXPECT_EQ(raisedStatus([] { Orvel::Analytics::Events::generateGuidString(); }), kNoSuchModule);
}

TEST(MissingRuntime, LeavesTheConstructorOfASession) {
    EXPECT_EQ(raisedStatus(construct), kNoSuchModule);
}

TEST(MissingRuntime, LeavesTheProcessSound) {
    EXPECT_EQ(raisedStatus(construct), kNoSuchModule);
    EXPECT_EQ(raisedStatus(construct), kNoSuchModule);
    EXPECT_THROW(AnalyticsSession(ORVEL_TEXT(""), ORVEL_TEXT("1")), const char*);
    EXPECT_EQ(Orvel::toUtf8(Orvel::toWide("text")), "text");
}

}  // namespace
