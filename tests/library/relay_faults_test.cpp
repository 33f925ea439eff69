/// What each operation of a session gives when something is wrong with the service's connection:
/// the library on the project's own RPC client, whose server does what a script says.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "orvel/analytics.h"
#include "orvel/relay/rpc_client.h"
#include "support/data_classes.h"
#include "support/fault_tally.h"
#include "tests/relay/client_faults.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/other_user.h"
#include "tests/relay/server_process.h"
#include "tests/relay/temporary_folder.h"

namespace {

using namespace Orvel::Relay::Testing;
using Orvel::WideString;
using Orvel::Analytics::hresult_error;
using Orvel::Support::FaultTally;
using Orvel::TestSupport::TestDataClass;

namespace Status = Orvel::Relay::Status;

/// Where the library's clients look.
std::function<std::unique_ptr<Orvel::Relay::Client::EndpointClient>()> makeClient;

/// In the results: the operation raised the JSON layer's error.
constexpr int kRaised = 100;

/// The results of an operation each, in the order of `kOperations`.
using Results = std::array<int, 5>;

/// The application's side.
struct Application {
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")};
    TestDataClass dataClass{{}};
    ConsentObject consent;
    PrivacyDocuments documents;
};

struct Operation {
    const char* name;
    Orvel::Analytics::Emitters::AnalyticsResult (*run)(Application&);
};

constexpr std::array kOperations = {
    Operation{"RegisterDataClass",
              [](Application& from) { return from.session.RegisterDataClass(&from.dataClass); }},
    Operation{"SendEvents", [](Application& from) { return from.session.SendEvents(); }},
    Operation{"GetConsent",
              [](Application& from) { return from.session.GetConsent(&from.consent); }},
    Operation{"SetConsent",
              [](Application& from) {
                  return from.session.SetConsent(from.consent.processingPermissions);
              }},
    Operation{"GetDocumentURLs",
              [](Application& from) { return from.session.GetDocumentURLs(&from.documents); }},
};

int resultOf(const Operation& operation, Application& application) {
    try {
        return static_cast<int>(operation.run(application));
    } catch (const hresult_error&) {
        return kRaised;
    }
}

// Which results a failure has is a matter of how far the operation came, and of the status only
// when there is no connection.
Results resultsWithoutConnection(std::int32_t status) {
    switch (status) {
        case Status::kServerUnavailable:
            return {22, 1, 1, 1, kRaised};
        case Status::kAccessDenied:
            return {32, 1, 1, 1, kRaised};
        default:
            return {1, 1, 1, 1, kRaised};
    }
}
constexpr Results kResultsWithoutHandshake = {0, 1, kRaised, 0, kRaised};
constexpr Results kResultsWithoutReply = {1, 1, 1, 1, kRaised};
constexpr Results kResultsOfAnEmptyReply = {0, 0, kRaised, 0, kRaised};

const std::string kAcknowledged = replyFrame(1, ORVEL_TEXT("MyApp::ACK::"));
const std::string kSucceeded = replyFrame(2, ORVEL_TEXT("MyApp::SUCCESS::"));

void scriptHandshake(ScriptedServer& server) {
    server.welcome().receiveFrame().send(kAcknowledged).receiveFrame();
}

using Script = std::function<void(ScriptedServer&)>;

/// Whether every operation gives its result in this time, whatever was the matter is over for the
/// session afterwards included.
bool allGive(const Results& results, std::chrono::milliseconds cost, const Script& script) {
    bool asExpected = true;
    for (std::size_t at = 0; at < results.size(); ++at) {
        ScriptedServer server;
        makeClient = [&server] { return server.makeClient(); };
        script(server);
        Application application;
        const int result = resultOf(kOperations[at], application);
        EXPECT_EQ(result, results[at]) << kOperations[at].name;
        EXPECT_EQ(server.elapsed(), cost) << kOperations[at].name;
        asExpected = asExpected && result == results[at] && server.elapsed() == cost;

        server.startOver();
        scriptHandshake(server);
        server.send(kSucceeded);
        const int next = resultOf(kOperations[0], application);
        EXPECT_EQ(next, 0) << "after " << kOperations[at].name;
        asExpected = asExpected && next == 0;
    }
    return asExpected;
}

TEST(LibraryOnTheRelay, GivesTheResultsOfEveryFaultOfAnAnswer) {
    FaultTally tally("library, answers");
    for (const AnswerFault& fault : greetingFaults()) {
        tally.injected(fault.name);
        tally.observed(fault.name, allGive(resultsWithoutConnection(fault.status), fault.cost,
                                           [&](ScriptedServer& server) {
                                               server.accept().receiveFrame();
                                               fault.inject(server, {0, welcomeFrame()});
                                           }));
    }
    for (const AnswerFault& fault : replyFaults()) {
        tally.injected(fault.name);
        tally.observed(fault.name,
                       allGive(kResultsWithoutHandshake, fault.cost, [&](ScriptedServer& server) {
                           server.welcome().receiveFrame();
                           fault.inject(server, {1, kAcknowledged});
                       }));
        tally.injected(fault.name);
        tally.observed(fault.name,
                       allGive(kResultsWithoutReply, fault.cost, [&](ScriptedServer& server) {
                           scriptHandshake(server);
                           fault.inject(server, {2, kSucceeded});
                       }));
    }
    tally.report();
}

TEST(LibraryOnTheRelay, GivesTheResultsOfARefusedGreeting) {
    for (const std::int32_t status :
         {Status::kAccessDenied, Status::kServerUnavailable, Status::kServerTooBusy}) {
        EXPECT_TRUE(allGive(resultsWithoutConnection(status), std::chrono::milliseconds(0),
                            [&](ScriptedServer& server) {
                                server.accept().receiveFrame().send(
                                    errorFrame(0, static_cast<std::uint32_t>(status)));
                            }));
    }
}

TEST(LibraryOnTheRelay, TakesAnEmptyReplyForOneWithoutAnError) {
    EXPECT_TRUE(
        allGive(kResultsWithoutHandshake, std::chrono::milliseconds(0), [](ScriptedServer& server) {
            server.welcome().receiveFrame().send(with(kAcknowledged, 24, 0));
        }));
    EXPECT_TRUE(
        allGive(kResultsOfAnEmptyReply, std::chrono::milliseconds(0), [](ScriptedServer& server) {
            scriptHandshake(server);
            server.send(with(kSucceeded, 24, 0));
        }));
}

TEST(LibraryOnTheRelay, FailsWhenABatchIsRefusedWhileItIsStillBeingSent) {
    ScriptedServer server;
    makeClient = [&server] { return server.makeClient(); };
    server.welcome().receiveFrame().send(kAcknowledged).receive(100'000).send(errorFrame(2, 14));
    Application application;
    application.session.CollectEvent(
        &application.dataClass,
        ORVEL_TEXT("{\"t\":\"") + WideString(2'000'000, u'x') + ORVEL_TEXT("\"}"));
    EXPECT_EQ(resultOf(kOperations[1], application), 1);
    EXPECT_EQ(server.elapsed(), std::chrono::milliseconds(0));
}

/// Whether every operation gives its result without a connection.
bool noneConnects(const char* fault, const Results& results,
                  const std::function<int(const Operation&)>& run) {
    bool asExpected = true;
    for (std::size_t at = 0; at < results.size(); ++at) {
        const int result = run(kOperations[at]);
        EXPECT_EQ(result, results[at]) << fault << ", " << kOperations[at].name;
        asExpected = asExpected && result == results[at];
    }
    return asExpected;
}

/// No descriptor can be had in its lifetime.
class NoDescriptors {
  public:
    NoDescriptors() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        rlimit none = before_;
        none.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }

  private:
    rlimit before_{};
};

TEST(LibraryOnTheRelay, GivesTheResultsOfEveryReasonThatKeepsItFromConnecting) {
    FaultTally tally("library, connections");
    for (const ConnectFault& fault : connectFaults()) {
        tally.injected(fault.name);
        tally.observed(fault.name,
                       noneConnects(fault.name, resultsWithoutConnection(fault.status),
                                    [&](const Operation& operation) {
                                        ScriptedServer server;
                                        const auto paths = fault.inject(server);
                                        makeClient = [&] { return server.makeClient(paths); };
                                        Application application;
                                        const int result = resultOf(operation, application);
                                        EXPECT_EQ(server.elapsed(), fault.cost) << fault.name;
                                        return result;
                                    }));
    }
    constexpr const char* kExhausted = "exhausted descriptors";
    tally.injected(kExhausted);
    tally.observed(kExhausted,
                   noneConnects(kExhausted, resultsWithoutConnection(Status::kOutOfResources),
                                [](const Operation& operation) {
                                    ScriptedServer server;
                                    server.welcome();
                                    makeClient = [&] { return server.makeClient(); };
                                    Application application;
                                    const NoDescriptors none;
                                    return resultOf(operation, application);
                                }));
    tally.report();
}

TEST(LibraryOnTheRelay, GivesTheResultsOfRefusalsAmongUsers) {
    if (!canBecomeOthers()) {
        GTEST_SKIP() << "only root can play several users";
    }
    FaultTally tally("library, users");
    const Results denied = resultsWithoutConnection(Status::kAccessDenied);

    constexpr const char* kNotPermitted = "a socket that is not permitted";
    ScriptedServer closed;
    const auto folder = std::filesystem::path(closed.path()).parent_path();
    ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
    ASSERT_EQ(::chmod(closed.path().c_str(), 0600), 0);
    makeClient = [&] { return closed.makeClient(); };
    tally.injected(kNotPermitted);
    tally.observed(kNotPermitted, noneConnects(kNotPermitted, denied, [](const Operation& each) {
                       return asUser(kNobody, [&] {
                           Application application;
                           return resultOf(each, application);
                       });
                   }));

    constexpr const char* kAnotherUser = "a server that another user runs";
    const TemporaryFolder open;
    ASSERT_EQ(::chmod(open.path().c_str(), 01777), 0);
    ServerProcess server(open.file("a.sock"), kNobody,
                         [](ServedConnection& connection) { connection.welcome(); });
    makeClient = [&] { return closed.makeClient({open.file("a.sock")}); };
    tally.injected(kAnotherUser);
    tally.observed(kAnotherUser, noneConnects(kAnotherUser, denied, [](const Operation& each) {
                       Application application;
                       return resultOf(each, application);
                   }));
    tally.report();
}

}  // namespace

namespace Orvel::Relay::Client::Native {

std::shared_ptr<Core::RpcClient> RpcClient::GetClientForEndpoint(WideString /*endpoint*/) {
    return makeClient();
}

}  // namespace Orvel::Relay::Client::Native
