#ifndef ORVEL_WINDOWS_RUNTIME_FIXTURE_H
#define ORVEL_WINDOWS_RUNTIME_FIXTURE_H

#include <gtest/gtest.h>
#include <windows.h>

#include <array>

#include "json/json.h"
#include "json/windows/factory.h"
#include "orvel/analytics/session.h"
#include "support/stand_in_runtime/stand_in.h"

namespace Orvel::TestSupport {

inline constexpr std::array kRuntimeClasses = {"AnalyticsInfo", "EasClientDeviceInformation",
                                               "JsonArray", "JsonObject", "JsonValue"};

/// Asks for the class of JSON objects.
inline void makeObject() {
    Analytics::Json::Document document;
    static_cast<void>(document.newObject());
}

/// Asks for the classes that a session begins with.
inline void construct() { AnalyticsSession(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"), {}, {}); }

/// A test of the library on the stand-in runtime, in a process that has an apartment. It begins
/// with empty slots; at its end nothing that the runtime gave may be left.
class OnStandIn : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        static CO_MTA_USAGE_COOKIE cookie = nullptr;
        if (cookie == nullptr) {
            ASSERT_EQ(CoIncrementMTAUsage(&cookie), S_OK);
        }
    }

    void TearDown() override {
        Analytics::Json::releaseFactories();
        expectNothingLeft();
    }

    void expectNothingLeft() const {
        EXPECT_EQ(runtime.liveObjects(), 0);
        EXPECT_EQ(runtime.usesAfterRelease(), 0U);
        for (const char* const runtimeClass : kRuntimeClasses) {
            EXPECT_EQ(runtime.factoryReferences(runtimeClass), 0U) << runtimeClass;
        }
    }

    StandIn::StandIn runtime;
};

}  // namespace Orvel::TestSupport

#endif
