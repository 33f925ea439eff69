#include "service/access.h"

#include <gtest/gtest.h>

namespace Orvel::Service {
namespace {

TEST(AccessTest, EverythingIsAllowedWhenNothingIsSaid) {
    const Access access;
    EXPECT_TRUE(access.mayConnect("App", 0));
    EXPECT_TRUE(access.mayUse("App", "Evt"));
}

TEST(AccessTest, OnlyUsersOnTheListMayConnect) {
    const Access access{.users = Users{1, 3}};
    EXPECT_FALSE(access.mayConnect("App", 0));
    EXPECT_TRUE(access.mayConnect("App", 1));
    EXPECT_FALSE(access.mayConnect("App", 2));
    EXPECT_FALSE((Access{.users = Users{}}.mayConnect("App", 1)));
}

TEST(AccessTest, OnlyApplicationsOnTheListMayConnect) {
    Access access;
    access.applications.emplace();
    EXPECT_FALSE(access.mayConnect("App", 1));
    access.applications->emplace("App", AllowedApplication{});
    EXPECT_TRUE(access.mayConnect("App", 1));
    for (const char* other : {"", "app", "Ap", "App ", "Other"}) {
        EXPECT_FALSE(access.mayConnect(other, 1)) << other;
        EXPECT_FALSE(access.mayUse(other, "Evt")) << other;
    }
}

TEST(AccessTest, UsersOfAnApplicationMustBeOnBothLists) {
    Access access{.users = Users{1, 2}};
    access.applications.emplace();
    access.applications->emplace("App", AllowedApplication{.users = Users{2, 3}});
    access.applications->emplace("Open", AllowedApplication{});
    EXPECT_FALSE(access.mayConnect("App", 1));
    EXPECT_TRUE(access.mayConnect("App", 2));
    EXPECT_FALSE(access.mayConnect("App", 3));
    EXPECT_TRUE(access.mayConnect("Open", 1));
}

TEST(AccessTest, OnlyClassesOnAnApplicationsListMayBeUsed) {
    Access access;
    access.applications.emplace();
    access.applications->emplace("Open", AllowedApplication{});
    access.applications->emplace("App", AllowedApplication{.dataClasses = {{"Evt"}}});
    (*access.applications)["None"].dataClasses.emplace();
    EXPECT_TRUE(access.mayUse("Open", "Evt"));
    EXPECT_TRUE(access.mayUse("App", "Evt"));
    EXPECT_FALSE(access.mayUse("App", "evt"));
    EXPECT_FALSE(access.mayUse("App", ""));
    EXPECT_FALSE(access.mayUse("None", "Evt"));
}

}  // namespace
}  // namespace Orvel::Service
