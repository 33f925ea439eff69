#include "relay/wire/endpoint.h"

#include <gtest/gtest.h>

namespace Orvel::Relay::Wire {
namespace {

TEST(EndpointName, HasOneToSixtyFourHarmlessCharacters) {
    EXPECT_TRUE(isEndpointName("OrvelAnalyticsRpcEndpoint"));
    EXPECT_TRUE(isEndpointName("a"));
    EXPECT_TRUE(isEndpointName("A-Z_a.z-09"));
    EXPECT_TRUE(isEndpointName("..."));
    EXPECT_TRUE(isEndpointName(std::string(64, 'x')));
    EXPECT_FALSE(isEndpointName(""));
    EXPECT_FALSE(isEndpointName(std::string(65, 'x')));
    for (const char* name : {".", "..", "a/b", "/", "a b", "a\n", "a:b", "a@b", "\xC3\xA4"}) {
        EXPECT_FALSE(isEndpointName(name)) << name;
    }
    EXPECT_FALSE(isEndpointName(std::string("a\0b", 3)));
}

TEST(EndpointName, IsReadFromWideTextWithoutGuessing) {
    EXPECT_EQ(toEndpointName(ORVEL_RELAY_TEXT("Some.Name_1-2")), "Some.Name_1-2");
    EXPECT_EQ(toEndpointName(ORVEL_RELAY_TEXT("")), "");
    EXPECT_EQ(toEndpointName(ORVEL_RELAY_TEXT("..")), "");
    EXPECT_EQ(toEndpointName(ORVEL_RELAY_TEXT("a/b")), "");
    // Its low byte is an 'A'.
    EXPECT_EQ(toEndpointName(ORVEL_RELAY_TEXT("\u0141")), "");
    EXPECT_EQ(toEndpointName(WideString(ORVEL_RELAY_TEXT("a\0b"), 3)), "");
    EXPECT_EQ(toEndpointName(WideString(65, ORVEL_RELAY_TEXT('x'))), "");
}

TEST(EndpointPaths, LeadToNoServerWhenNoFolderIsKnown) {
    EXPECT_TRUE(pathsToTry(EndpointFolders(), "Name").empty());
}

}  // namespace
}  // namespace Orvel::Relay::Wire
