#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <ostream>

#include "orvel/relay/rpc_client.h"
#include "relay/client/path_transport.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/other_user.h"
#include "tests/relay/scripted_server.h"
#include "tests/relay/server_process.h"
#include "tests/relay/temporary_folder.h"

/// Whom the client believes that it is the service.

namespace Orvel::Relay::Testing {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kRoot = 0;
constexpr char kHeardNothing = 'N';
constexpr char kHeardSomething = 'S';

std::int32_t openAt(const std::vector<std::string>& paths) {
    Client::EndpointClient client(Client::makeTransport(paths, Client::systemWaiter()));
    return client.OpenConnection(u"");
}

// A server that tells whether a client said anything before it went, and greets one that did.
void greet(ServedConnection& connection) {
    const bool spoke = !connection.receive(Wire::kHeaderSize).empty();
    connection.tell(spoke ? kHeardSomething : kHeardNothing);
    connection.send(welcomeFrame());
}

/// A folder in a folder, with owners and modes of a test's choice.
class FolderOfAService {
  public:
    struct Folder {
        uid_t owner;
        mode_t mode;
    };

    FolderOfAService(Folder outer, Folder inner) {
        fs::create_directory(folder());
        give(folder(), inner);
        give(above(), outer);
    }

    fs::path folder() const { return above_.path() / "service"; }
    const fs::path& above() const { return above_.path(); }
    std::string socket() const { return folder() / "a.sock"; }

  private:
    static void give(const fs::path& folder, const Folder& to) {
        EXPECT_EQ(::chown(folder.c_str(), to.owner, to.owner), 0);
        EXPECT_EQ(::chmod(folder.c_str(), to.mode), 0);
    }

    TemporaryFolder above_;
};

constexpr FolderOfAService::Folder kOfRoot{kRoot, 0755};
constexpr FolderOfAService::Folder kOfNobody{kNobody, 0755};

class ServerIdentity : public testing::Test {
  protected:
    void SetUp() override {
        if (!canBecomeOthers()) {
            GTEST_SKIP() << "only root can run a server as another user";
        }
    }

    static void expectRefused(ServerProcess& server, std::int32_t status) {
        EXPECT_EQ(status, Status::kAccessDenied);
        EXPECT_EQ(server.hear(), kHeardNothing);
    }
};

TEST_F(ServerIdentity, AnyUserTalksWithAServerOfRoot) {
    const FolderOfAService place(kOfNobody, {kNobody, 0777});
    ServerProcess server(place.socket(), kRoot, greet);
    EXPECT_EQ(asUser(kNobody, [&] { return openAt({place.socket()}); }), Status::kSuccess);
    EXPECT_EQ(asUser(kStranger, [&] { return openAt({place.socket()}); }), Status::kSuccess);
    EXPECT_EQ(openAt({place.socket()}), Status::kSuccess);
}

TEST_F(ServerIdentity, AUserTalksWithAServerOfItsOwn) {
    const FolderOfAService place({kRoot, 01777}, {kNobody, 0777});
    ServerProcess server(place.socket(), kNobody, greet);
    EXPECT_EQ(asUser(kNobody, [&] { return openAt({place.socket()}); }), Status::kSuccess);
}

TEST_F(ServerIdentity, NobodyTalksWithAServerOfAnotherUser) {
    const FolderOfAService place({kRoot, 01777}, {kNobody, 0755});
    ServerProcess server(place.socket(), kNobody, greet);
    expectRefused(server, openAt({place.socket()}));
    expectRefused(server, asUser(kStranger, [&] { return openAt({place.socket()}); }));
}

TEST_F(ServerIdentity, ARefusedServerIsTheLastOneThatIsTried) {
    const FolderOfAService place({kRoot, 01777}, {kNobody, 0755});
    ServerProcess stranger(place.socket(), kNobody, greet);
    ScriptedServer own;
    own.welcome();
    EXPECT_EQ(own.makeClient({place.socket(), own.path()})->OpenConnection(u""),
              Status::kAccessDenied);
    EXPECT_EQ(stranger.hear(), kHeardNothing);
    EXPECT_EQ(own.received(), "");
}

TEST_F(ServerIdentity, ARefusedServerLeavesTheClientClosedAndUsable) {
    const FolderOfAService place({kRoot, 01777}, {kNobody, 0755});
    Client::EndpointClient client(Client::makeTransport({place.socket()}, Client::systemWaiter()));
    WideString reply = u"untouched";
    {
        ServerProcess stranger(place.socket(), kNobody, greet);
        EXPECT_EQ(client.OpenConnection(u""), Status::kAccessDenied);
        EXPECT_EQ(client.ExecuteCommand(u"TA", 0, u"secret", reply), Status::kConnectionLost);
        EXPECT_EQ(client.CloseConnection(), Status::kConnectionLost);
        EXPECT_EQ(stranger.hear(), kHeardNothing);
    }
    ServerProcess own(place.socket(), kRoot, greet);
    EXPECT_EQ(client.OpenConnection(u""), Status::kSuccess);
    EXPECT_EQ(reply, u"untouched");
}

TEST_F(ServerIdentity, TheServicesUserIsTheOneToWhomRootHasGivenTheFolder) {
    for (const mode_t mode : {0755U, 0711U, 0750U}) {
        const FolderOfAService place(kOfRoot, {kNobody, mode});
        ServerProcess server(place.socket(), kNobody, greet);
        EXPECT_EQ(openAt({place.socket()}), Status::kSuccess) << std::oct << mode;
    }
    const FolderOfAService place(kOfRoot, kOfNobody);
    ServerProcess server(place.socket(), kNobody, greet);
    EXPECT_EQ(asUser(kStranger, [&] { return openAt({place.socket()}); }), Status::kSuccess);
}

TEST_F(ServerIdentity, AnotherUserIsNotTheServicesUser) {
    const FolderOfAService place(kOfRoot, kOfNobody);
    ServerProcess server(place.socket(), kNobody, greet);
    EXPECT_EQ(openAt({place.socket()}), Status::kSuccess);
    EXPECT_EQ(server.hear(), kHeardSomething);
    // As if the folder had been given to somebody else since.
    ASSERT_EQ(::chown(place.folder().c_str(), kStranger, kStranger), 0);
    expectRefused(server, openAt({place.socket()}));
}

struct BadPlace {
    const char* name;
    FolderOfAService::Folder above;
    FolderOfAService::Folder folder;
};

void PrintTo(const BadPlace& place, std::ostream* to) { *to << place.name; }

std::string nameOf(const testing::TestParamInfo<BadPlace>& info) { return info.param.name; }

class PlaceThatNamesNobody : public ServerIdentity, public testing::WithParamInterface<BadPlace> {};

TEST_P(PlaceThatNamesNobody, IsNoReasonToTrustItsOwner) {
    const FolderOfAService place(GetParam().above, GetParam().folder);
    ServerProcess server(place.socket(), kNobody, greet);
    expectRefused(server, openAt({place.socket()}));
}

INSTANTIATE_TEST_SUITE_P(
    Folders, PlaceThatNamesNobody,
    testing::Values(BadPlace{"TheGroupMayWrite", kOfRoot, {kNobody, 0775}},
                    BadPlace{"OthersMayWrite", kOfRoot, {kNobody, 0757}},
                    BadPlace{"OthersMayWriteThoughNotRemove", kOfRoot, {kNobody, 01777}},
                    BadPlace{"ItsOwnerMadeIt", kOfNobody, kOfNobody},
                    BadPlace{"TheGroupMayWriteAboveIt", {kRoot, 0775}, kOfNobody},
                    BadPlace{"OthersMayWriteAboveIt", {kRoot, 01777}, kOfNobody}),
    nameOf);

TEST_F(ServerIdentity, ALinkToTheServicesFolderIsNotThatFolder) {
    const FolderOfAService place(kOfRoot, kOfNobody);
    const fs::path link = place.above() / "link";
    fs::create_directory_symlink(place.folder(), link);
    ServerProcess server(place.socket(), kNobody, greet);
    expectRefused(server, openAt({link / "a.sock"}));
}

}  // namespace
}  // namespace Orvel::Relay::Testing
