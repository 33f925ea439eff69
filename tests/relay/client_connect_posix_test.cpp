#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/other_user.h"
#include "tests/relay/scripted_server.h"

/// What a socket's path, its rights and a lack of descriptors do to the client's connecting.

namespace Orvel::Relay::Testing {
namespace {

std::filesystem::path folderOf(const ScriptedServer& server) {
    return std::filesystem::path(server.path()).parent_path();
}

TEST(ClientConnectToSocket, FindsNoServerInAFileOfAnotherKind) {
    ScriptedServer server;
    std::ofstream(server.pathBeside("file.sock")) << "not a socket";
    EXPECT_EQ(server.makeClient({server.pathBeside("file.sock")})->OpenConnection(u""),
              Status::kServerUnavailable);
}

TEST(ClientConnectToSocket, FindsNoServerAtAPathThatIsTooLong) {
    ScriptedServer server;
    // The longest that fits is one byte shorter than the room for it.
    const std::size_t room = sizeof(sockaddr_un::sun_path);
    const std::string folder = folderOf(server).string() + "/";
    const std::string tooLong = folder + std::string(room - folder.size(), 'x');
    EXPECT_EQ(server.makeClient({tooLong})->OpenConnection(u""), Status::kServerUnavailable);
    EXPECT_EQ(server.makeClient({tooLong + "x"})->OpenConnection(u""), Status::kServerUnavailable);

    const std::string fits = tooLong.substr(0, room - 1);
    ASSERT_EQ(::rename(server.path().c_str(), fits.c_str()), 0);
    server.welcome();
    EXPECT_EQ(server.makeClient({fits})->OpenConnection(u""), Status::kSuccess);
}

TEST(ClientConnectToSocket, ReportsARefusalAndDoesNotLookFurther) {
    ScriptedServer refusing;
    ScriptedServer other;
    ASSERT_EQ(::chmod(folderOf(refusing).c_str(), 0755), 0);
    ASSERT_EQ(::chmod(folderOf(other).c_str(), 0755), 0);
    ASSERT_EQ(::chmod(refusing.path().c_str(), 0000), 0);
    ASSERT_EQ(::chmod(other.path().c_str(), 0666), 0);
    const auto connectToBoth = [&] {
        other.welcome();
        return other.makeClient({refusing.path(), other.path()})->OpenConnection(u"");
    };
    if (::geteuid() != 0) {
        EXPECT_EQ(connectToBoth(), Status::kAccessDenied);
        return;
    }
    // Root may connect to everything: the test needs somebody else.
    const auto otherAlone = [&] {
        other.welcome();
        return other.makeClient({other.path()})->OpenConnection(u"");
    };
    if (!canBecomeOthers()) {
        GTEST_SKIP() << "root, and unable to become nobody";
    }
    EXPECT_EQ(asUser(kNobody, otherAlone), Status::kSuccess);
    EXPECT_EQ(asUser(kNobody, connectToBoth), Status::kAccessDenied);
}

TEST(ClientConnectToSocket, ReportsAFolderThatMayNotBeEnteredAsARefusal) {
    ScriptedServer server;
    const auto connectThere = [&] {
        server.welcome();
        return server.makeClient()->OpenConnection(u"");
    };
    ASSERT_EQ(::chmod(server.path().c_str(), 0666), 0);
    if (::geteuid() != 0) {
        ASSERT_EQ(::chmod(folderOf(server).c_str(), 0000), 0);
        EXPECT_EQ(connectThere(), Status::kAccessDenied);
        ASSERT_EQ(::chmod(folderOf(server).c_str(), 0700), 0);
        return;
    }
    if (!canBecomeOthers()) {
        GTEST_SKIP() << "root, and unable to become nobody";
    }
    ASSERT_EQ(::chmod(folderOf(server).c_str(), 0700), 0);
    EXPECT_EQ(asUser(kNobody, connectThere), Status::kAccessDenied);
}

TEST(ClientConnectToSocket, SaysThatDescriptorsAreExhausted) {
    ScriptedServer server;
    server.welcome().welcome();
    const auto client = server.makeClient();
    // The checks of UndefinedBehaviorSanitizer need descriptors themselves, the first time.
    ASSERT_EQ(client->OpenConnection(u""), Status::kSuccess);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::int32_t status = client->OpenConnection(u"");
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(status, Status::kOutOfResources);
    EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
}

}  // namespace
}  // namespace Orvel::Relay::Testing
