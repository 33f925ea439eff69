#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <vector>

#include "orvel/relay/rpc_client.h"
#include "tests/relay/scripted_server.h"

/// How the client finds a server, and what it says when it finds none.

namespace Orvel::Relay::Testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Takes connections as long as the queue of `path` has room for them.
class FullBacklog {
  public:
    explicit FullBacklog(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.data(), path.size());
        for (;;) {
            const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            sockets_.push_back(made);
            if (::connect(made, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
                break;
            }
        }
    }
    FullBacklog(const FullBacklog&) = delete;
    FullBacklog& operator=(const FullBacklog&) = delete;
    ~FullBacklog() {
        for (const int open : sockets_) {
            ::close(open);
        }
    }

    std::size_t size() const { return sockets_.size(); }

  private:
    std::vector<int> sockets_;
};

// Runs a check as a user without rights; the check's number is the child's exit status.
int asNobody(const std::function<int()>& check) {
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        const bool dropped = ::setresgid(kNobody, kNobody, kNobody) == 0 &&
                             ::setresuid(kNobody, kNobody, kNobody) == 0;
        ::_exit(dropped ? check() : 255);
    }
    int state = 0;
    ::waitpid(child, &state, 0);
    return WIFEXITED(state) ? WEXITSTATUS(state) : 254;
}

TEST(ClientConnect, FindsNoServerWhereNothingIs) {
    ScriptedServer server;
    EXPECT_EQ(server.makeClient({server.folder().file("nothing.sock")})->OpenConnection(u""),
              Status::kServerUnavailable);
    EXPECT_EQ(server.makeClient({server.folder().file("no-folder/a.sock")})->OpenConnection(u""),
              Status::kServerUnavailable);
    EXPECT_EQ(server.makeClient(std::vector<std::string>())->OpenConnection(u""),
              Status::kServerUnavailable);
    EXPECT_EQ(server.elapsed(), milliseconds(0));
}

TEST(ClientConnect, FindsNoServerWhereNobodyListens) {
    ScriptedServer server;
    server.stopListening();
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kServerUnavailable);
}

TEST(ClientConnect, FindsNoServerInAFileOfAnotherKind) {
    ScriptedServer server;
    std::ofstream(server.folder().file("file.sock")) << "not a socket";
    EXPECT_EQ(server.makeClient({server.folder().file("file.sock")})->OpenConnection(u""),
              Status::kServerUnavailable);
}

TEST(ClientConnect, FindsNoServerAtAPathThatIsTooLong) {
    ScriptedServer server;
    // The longest that fits is one byte shorter than the room for it.
    const std::size_t room = sizeof(sockaddr_un::sun_path);
    const std::string folder = server.folder().path().string() + "/";
    const std::string tooLong = folder + std::string(room - folder.size(), 'x');
    EXPECT_EQ(server.makeClient({tooLong})->OpenConnection(u""), Status::kServerUnavailable);
    EXPECT_EQ(server.makeClient({tooLong + "x"})->OpenConnection(u""), Status::kServerUnavailable);

    const std::string fits = tooLong.substr(0, room - 1);
    ASSERT_EQ(::rename(server.path().c_str(), fits.c_str()), 0);
    server.welcome();
    EXPECT_EQ(server.makeClient({fits})->OpenConnection(u""), Status::kSuccess);
}

TEST(ClientConnect, GoesOnWhereNothingIsOrNobodyListens) {
    ScriptedServer server;
    ScriptedServer dead;
    dead.stopListening();
    server.welcome();
    const auto client =
        server.makeClient({server.folder().file("nothing.sock"), dead.path(), server.path()});
    EXPECT_EQ(client->OpenConnection(u""), Status::kSuccess);
}

TEST(ClientConnect, GoesNoFurtherThanTheFirstServer) {
    ScriptedServer first;
    ScriptedServer second;
    first.welcome();
    EXPECT_EQ(first.makeClient({first.path(), second.path()})->OpenConnection(u""),
              Status::kSuccess);
    second.accept();
    second.proceed();
    EXPECT_EQ(second.received(), "");
}

TEST(ClientConnect, ReportsARefusalAndDoesNotLookFurther) {
    ScriptedServer refusing;
    ScriptedServer other;
    ASSERT_EQ(::chmod(refusing.folder().path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(other.folder().path().c_str(), 0755), 0);
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
    if (asNobody([] { return 0; }) == 255) {
        GTEST_SKIP() << "root, and unable to become nobody";
    }
    EXPECT_EQ(asNobody(otherAlone), Status::kSuccess);
    EXPECT_EQ(asNobody(connectToBoth), Status::kAccessDenied);
}

TEST(ClientConnect, ReportsAFolderThatMayNotBeEnteredAsARefusal) {
    ScriptedServer server;
    const auto connectThere = [&] {
        server.welcome();
        return server.makeClient()->OpenConnection(u"");
    };
    ASSERT_EQ(::chmod(server.path().c_str(), 0666), 0);
    if (::geteuid() != 0) {
        ASSERT_EQ(::chmod(server.folder().path().c_str(), 0000), 0);
        EXPECT_EQ(connectThere(), Status::kAccessDenied);
        ASSERT_EQ(::chmod(server.folder().path().c_str(), 0700), 0);
        return;
    }
    if (asNobody([] { return 0; }) == 255) {
        GTEST_SKIP() << "root, and unable to become nobody";
    }
    ASSERT_EQ(::chmod(server.folder().path().c_str(), 0700), 0);
    EXPECT_EQ(asNobody(connectThere), Status::kAccessDenied);
}

TEST(ClientConnect, GivesUpAFullQueueOfConnectionsAfterTwoSeconds) {
    ScriptedServer server;
    const FullBacklog backlog(server.path());
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kTimeout);
    EXPECT_EQ(server.elapsed(), seconds(2));
}

TEST(ClientConnect, WaitsForRoomInAFullQueueOfConnections) {
    ScriptedServer server;
    const FullBacklog backlog(server.path());
    ASSERT_GE(backlog.size(), 2u);
    server.pause(milliseconds(500));
    for (std::size_t i = 1; i < backlog.size(); ++i) {
        server.accept();
    }
    server.welcome();
    EXPECT_EQ(server.makeClient()->OpenConnection(u""), Status::kSuccess);
    EXPECT_GE(server.elapsed(), milliseconds(500));
    EXPECT_LT(server.elapsed(), seconds(1));
}

TEST(ClientConnect, SaysThatDescriptorsAreExhausted) {
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

TEST(ClientConnect, AnEndpointWithAMalformedNameHasNoServer) {
    for (const WideString& name : {WideString(u""), WideString(u".."), WideString(u"a/b"),
                                   WideString(65, u'x'), WideString(u"\xD800")}) {
        const auto client = Client::Native::RpcClient::GetClientForEndpoint(name);
        ASSERT_NE(client, nullptr);
        EXPECT_EQ(client->OpenConnection(u""), Status::kServerUnavailable);
    }
}

}  // namespace
}  // namespace Orvel::Relay::Testing
