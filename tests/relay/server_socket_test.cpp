#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include "orvel/relay/server.h"
#include "tests/relay/running_server.h"
#include "tests/relay/scripted_server.h"

/// The server's place in the file system.

namespace Orvel::Relay::Testing {
namespace {

namespace fs = std::filesystem;

// The error of a server that cannot be made, 0 when it can.
int errorOfServerAt(const fs::path& path) {
    try {
        const Server::Server server(path, always(echo));
        return 0;
    } catch (const std::system_error& error) {
        return error.code().value();
    }
}

mode_t modeOf(const fs::path& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

TEST(ServerSocket, IsThereWhileTheServerIsAndGoneAfterwards) {
    const TemporaryFolder folder;
    const fs::path path = folder.file("a.sock");
    {
        const Server::Server server(path, always(echo));
        EXPECT_TRUE(fs::is_socket(path));
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST(ServerSocket, IsRemovedByACleanStop) {
    RunningServer server;
    EXPECT_TRUE(fs::is_socket(server.path()));
    server.finish();
    EXPECT_FALSE(fs::exists(server.path()));
}

TEST(ServerSocket, IsOpenToAllUnlessToldOtherwiseWhateverTheMask) {
    const TemporaryFolder folder;
    const mode_t mask = ::umask(0077);
    {
        const Server::Server server(folder.file("all.sock"), always(echo));
        Server::Options options;
        options.socketMode = 0660;
        const Server::Server some(folder.file("some.sock"), always(echo), options);
        EXPECT_EQ(modeOf(folder.file("all.sock")), 0666u);
        EXPECT_EQ(modeOf(folder.file("some.sock")), 0660u);
    }
    ::umask(mask);
}

TEST(ServerSocket, ItsMissingFoldersAreMadeForThoseWhoMayUseThem) {
    const TemporaryFolder folder;
    const mode_t mask = ::umask(0077);
    const mode_t expected = ::geteuid() == 0 ? 0755 : 0700;
    {
        const Server::Server server(folder.path() / "one" / "two" / "a.sock", always(echo));
        EXPECT_EQ(modeOf(folder.path() / "one"), expected);
        EXPECT_EQ(modeOf(folder.path() / "one" / "two"), expected);
    }
    ::umask(mask);
}

TEST(ServerSocket, AFolderThatIsThereKeepsItsMode) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0750), 0);
    const Server::Server server(folder.file("a.sock"), always(echo));
    EXPECT_EQ(modeOf(folder.path()), 0750u);
}

TEST(ServerSocket, GetsItsGroup) {
    const TemporaryFolder folder;
    Server::Options options;
    // Root may give it to any group, another user to one of its own.
    options.socketGroup = ::geteuid() == 0 ? 4321 : ::getegid();
    const Server::Server server(folder.file("a.sock"), always(echo), options);
    struct stat found {};
    ASSERT_EQ(::stat(folder.file("a.sock").c_str(), &found), 0);
    EXPECT_EQ(found.st_gid, options.socketGroup);
}

TEST(ServerSocket, InAFolderThatEveryUserMayChangeIsRefused) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    EXPECT_EQ(errorOfServerAt(folder.file("a.sock")), EPERM);
    EXPECT_FALSE(fs::exists(folder.file("a.sock")));
    // Here nobody can remove what another user has made.
    ASSERT_EQ(::chmod(folder.path().c_str(), 01777), 0);
    EXPECT_EQ(errorOfServerAt(folder.file("a.sock")), 0);
}

TEST(ServerSocket, InAnotherUsersFolderIsRefused) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make one";
    }
    const TemporaryFolder folder;
    ASSERT_EQ(::chown(folder.path().c_str(), 1, 1), 0);
    EXPECT_EQ(errorOfServerAt(folder.file("a.sock")), EPERM);
}

TEST(ServerSocket, OfARunningServerIsRefusedToASecondOne) {
    RunningServer server;
    EXPECT_EQ(errorOfServerAt(server.path()), EADDRINUSE);
    const auto client = server.makeClient();
    EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
}

TEST(ServerSocket, OfAServerThatKnowsNoLockIsRefusedToo) {
    ScriptedServer other;
    EXPECT_EQ(errorOfServerAt(other.path()), EADDRINUSE);
    EXPECT_TRUE(fs::is_socket(other.path()));
}

TEST(ServerSocket, OfADeadServerIsTakenOver) {
    ScriptedServer dead;
    dead.stopListening();
    ASSERT_TRUE(fs::is_socket(dead.path()));
    EXPECT_EQ(errorOfServerAt(dead.path()), 0);
}

TEST(ServerSocket, AnotherFileInItsPlaceIsLeftAlone) {
    const TemporaryFolder folder;
    std::ofstream(folder.file("a.sock")) << "precious";
    EXPECT_EQ(errorOfServerAt(folder.file("a.sock")), ENOTSOCK);
    std::string content;
    std::getline(std::ifstream(folder.file("a.sock")), content);
    EXPECT_EQ(content, "precious");
}

TEST(ServerSocket, APathThatIsTooLongIsRefused) {
    const TemporaryFolder folder;
    EXPECT_EQ(errorOfServerAt(folder.file(std::string(120, 'x'))), ENAMETOOLONG);
}

TEST(ServerSocket, AFolderThatCannotBeMadeIsReported) {
    const TemporaryFolder folder;
    std::ofstream(folder.file("file")) << "not a folder";
    EXPECT_EQ(errorOfServerAt(folder.path() / "file" / "a.sock"), ENOTDIR);
}

TEST(ServerSocket, AFolderThatCannotBeLookedAtIsReported) {
    const TemporaryFolder folder;
    const fs::path loop = folder.path() / "loop";
    fs::create_symlink(loop, loop);
    try {
        const Server::Server server(loop / "a.sock", always(echo));
        FAIL() << "a link to itself leads to a folder";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ELOOP);
        EXPECT_NE(std::string(error.what()).find("cannot look at the folder " + loop.string()),
                  std::string::npos)
            << error.what();
    }
}

TEST(ServerSocket, OfManyServersThatStartAtOnceExactlyOneWins) {
    constexpr int kServers = 8;
    for (int round = 0; round < 20; ++round) {
        // Each round begins with what a dead server left.
        ScriptedServer dead;
        dead.stopListening();
        std::barrier together(kServers);
        std::atomic<int> won = 0;
        std::vector<std::thread> threads;
        threads.reserve(kServers);
        for (int i = 0; i < kServers; ++i) {
            threads.emplace_back([&] {
                std::optional<Server::Server> server;
                together.arrive_and_wait();
                try {
                    server.emplace(dead.path(), always(echo));
                    ++won;
                } catch (const std::system_error& error) {
                    EXPECT_EQ(error.code().value(), EADDRINUSE);
                }
                together.arrive_and_wait();
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(won, 1);
    }
}

TEST(ServerSocket, OptionsOutOfRangeAreRefused) {
    const TemporaryFolder folder;
    const auto refused = [&](const Server::Options& options) {
        EXPECT_THROW(Server::Server(folder.file("a.sock"), always(echo), options),
                     std::invalid_argument);
    };
    Server::Options options;
    options.workers = 0;
    refused(options);
    options = {};
    options.connections = 0;
    refused(options);
    options = {};
    options.largestBody = (1u << 30) + 1;
    refused(options);
    EXPECT_FALSE(fs::exists(folder.file("a.sock")));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
