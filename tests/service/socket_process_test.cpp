#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "support/service_process.h"

/// Who may connect to the service: mode and group of its socket.

namespace Orvel::Service {
namespace {

using testing::HasSubstr;

class SocketProcessTest : public testing::Test {
  protected:
    struct stat socketWith(const std::string& settings) {
        service_.useSettings(settings);
        service_.start();
        struct stat found {};
        EXPECT_EQ(
            ::stat((service_.endpointFolder() / "OrvelAnalyticsRpcEndpoint.sock").c_str(), &found),
            0);
        EXPECT_EQ(service_.stop(), 0);
        return found;
    }
    mode_t modeWith(const std::string& settings) { return socketWith(settings).st_mode & 07777; }

    static std::string ownGroup() { return ::getgrgid(::getegid())->gr_name; }

    Support::ServiceProcess service_{ORVEL_ANALYTICSD};
};

TEST_F(SocketProcessTest, IsForAllUsersWhenRootServesAndForTheUserOtherwise) {
    EXPECT_EQ(modeWith(""), ::geteuid() == 0 ? 0666U : 0600U);
}

TEST_F(SocketProcessTest, HasTheModeThatTheSettingsName) {
    EXPECT_EQ(modeWith("socket_mode = '0640'"), 0640U);
}

TEST_F(SocketProcessTest, IsForAGroupWhenTheSettingsNameOne) {
    const struct stat found = socketWith("socket_group = '" + ownGroup() + "'");
    EXPECT_EQ(found.st_mode & 07777, 0660U);
    EXPECT_EQ(found.st_gid, ::getegid());
    EXPECT_EQ(modeWith("socket_mode = '0666'\nsocket_group = '" + ownGroup() + "'"), 0666U);
}

TEST_F(SocketProcessTest, GroupThatIsNotThereKeepsTheServiceFromStarting) {
    service_.useSettings("socket_group = 'no such group'");
    try {
        service_.start();
        FAIL() << "it started";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("there is no group no such group (socket_group)"));
    }
}

}  // namespace
}  // namespace Orvel::Service
