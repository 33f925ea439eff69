#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <barrier>
#include <fstream>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "faults/ledger.h"
#include "faults/reporter.h"
#include "orvel/relay/server.h"
#include "service/conversation.h"
#include "service/store.h"
#include "support/fault_table.h"
#include "support/service_process.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/raw_client.h"

/// The service and clients that are many, or that keep it waiting.

namespace Orvel::Faults {
namespace {

using namespace Relay::Testing;
using Relay::Wire::FrameType;
using Relay::Wire::kHeaderSize;
using Support::Fault;
using Support::ServiceProcess;
using testing::StartsWith;

Fault atOnce{"200 clients connect and send at once"};
Fault idle{"1000 clients stay and say nothing"};
Fault beyondTheCap{"a client comes when there are 1024"};
Fault halfAFrame{"a client sends half a frame and stays"};
Fault gibibyte{"a client announces a gibibyte and stays"};

void setDescriptorLimit(rlim_t limit) {
    rlimit now{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &now), 0);
    now.rlim_cur = limit;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &now), 0);
}

class CrowdTest : public testing::Test {
  protected:
    // What programs are given at first on most machines; the test itself needs more.
    static constexpr rlim_t kUsualLimit = 1024;
    static constexpr rlim_t kLimitOfTheTest = 4096;

    void start() {
        setDescriptorLimit(kUsualLimit);
        service_.start();
        service_.useEndpoint();
        setDescriptorLimit(kLimitOfTheTest);
    }

    void addIdleClients(std::size_t count) {
        while (idle_.size() < count) {
            ASSERT_TRUE(idle_.emplace_back().greet()) << idle_.size();
        }
    }

    ServiceProcess service_{ORVEL_ANALYTICSD};
    std::list<Reporter> idle_;
    Ledger ledger_;
};

TEST_F(CrowdTest, TwoHundredClientsAtOnceAreAllServed) {
    constexpr int kClients = 200;
    start();
    std::barrier together(kClients);
    std::vector<std::thread> threads;
    for (int i = 0; i < kClients; ++i) {
        threads.emplace_back([this, &together] {
            Reporter reporter;
            together.arrive_and_wait();
            atOnce.inject();
            const std::uint64_t served = reporter.connect() && reporter.report(ledger_, 5) ? 1 : 0;
            atOnce.observe(served);
            EXPECT_EQ(served, 1U);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const Account account = ledger_.account(storedNumbers(service_.dataFolder() / "analytics.db"));
    EXPECT_TRUE(account.isKept()) << account.text();
    EXPECT_EQ(account.acknowledged, 5U * kClients);
}

TEST_F(CrowdTest, ThousandIdleClientsKeepNobodyWaitingAndAreStillThere) {
    constexpr std::size_t kClients = 1000;
    start();
    ASSERT_NO_FATAL_FAILURE(addIdleClients(kClients));
    idle.inject(kClients);
    Reporter busy;
    ASSERT_TRUE(busy.connect());
    for (int batch = 0; batch < 20; ++batch) {
        EXPECT_TRUE(busy.report(ledger_, 5));
    }
    EXPECT_EQ(ledger_.acknowledged(), 100U);
    for (Reporter& client : idle_) {
        const std::string answer = client.say("::GET_CONSENT::");
        EXPECT_THAT(answer, StartsWith("::CONSENT_RECORD::"));
        idle.observe(answer.starts_with("::CONSENT_RECORD::") ? 1 : 0);
    }
}

TEST_F(CrowdTest, ClientsBeyondTheCapAreToldSoAndTheOthersAreServed) {
    constexpr std::size_t kCap = 1024;
    constexpr int kBeyond = 20;
    constexpr std::int32_t kTooBusy = 1723;
    start();
    ASSERT_NO_FATAL_FAILURE(addIdleClients(kCap));
    Reporter late;
    for (int i = 0; i < kBeyond; ++i) {
        beyondTheCap.inject();
        const std::int32_t status = late.open();
        EXPECT_EQ(status, kTooBusy);
        beyondTheCap.observe(status == kTooBusy ? 1 : 0);
    }
    EXPECT_THAT(idle_.back().say("::GET_CONSENT::"), StartsWith("::CONSENT_RECORD::"));
    idle_.pop_front();
    // The service takes a moment to see that somebody has gone.
    std::int32_t status = kTooBusy;
    while (status == kTooBusy) {
        status = late.open();
    }
    EXPECT_EQ(status, 0);
}

/// The service in this process, which waits for frames for two seconds only.
class ImpatientServiceTest : public testing::Test {
  protected:
    static constexpr const char* kSocket = "OrvelAnalyticsRpcEndpoint.sock";

    ImpatientServiceTest() : thread_([this] { server_.run(); }) {
        ::setenv("ORVEL_RPC_DIRECTORY", folder_.path().c_str(), 1);
    }
    ~ImpatientServiceTest() override {
        server_.stop();
        thread_.join();
    }

    static Relay::Server::Options impatient() {
        Relay::Server::Options options;
        options.frameDeadline = std::chrono::seconds(2);
        return options;
    }

    /// A client that has been greeted and then sends that.
    void addClient(const std::string& bytes) {
        RawClient& client = clients_.emplace_back(folder_.path() / kSocket);
        client.send(helloFrame());
        ASSERT_EQ(client.receive(kHeaderSize), welcomeFrame());
        client.send(bytes);
    }

    void expectOthersToBeServed() {
        Reporter reporter;
        ASSERT_TRUE(reporter.connect());
        for (int batch = 0; batch < 20; ++batch) {
            EXPECT_TRUE(reporter.report(ledger_, 5));
        }
        EXPECT_EQ(ledger_.acknowledged(), 100U);
    }

    void expectAllToBeDropped(Fault& fault) {
        for (RawClient& client : clients_) {
            const bool ended = client.waitForEnd();
            ASSERT_TRUE(ended);
            fault.observe();
        }
    }

    Support::TemporaryFolder folder_;
    Service::Store store_{folder_.path() / "analytics.db", Service::systemTime};
    Service::Settings settings_;
    Service::Log log_{[](std::string_view) {}, Service::systemTime};
    Relay::Server::Server server_{folder_.path() / kSocket,
                                  [this](const Relay::Server::Peer& peer) {
                                      return std::make_unique<Service::Conversation>(
                                          store_, settings_, log_, peer);
                                  },
                                  impatient()};
    std::list<RawClient> clients_;
    Ledger ledger_;
    std::thread thread_;
};

TEST_F(ImpatientServiceTest, ClientsThatSendHalfAFrameAreDroppedAndKeepNobodyWaiting) {
    const std::string command = commandFrame(1, Relay::WideString(10'000, u'x'));
    for (const std::size_t half : {std::size_t{1}, kHeaderSize / 2, kHeaderSize, kHeaderSize + 3,
                                   command.size() / 2, command.size() - 1}) {
        for (int i = 0; i < 8; ++i) {
            addClient(command.substr(0, half));
            halfAFrame.inject();
        }
    }
    expectOthersToBeServed();
    expectAllToBeDropped(halfAFrame);
}

/// The most memory that this process has used so far, in KiB.
std::uint64_t mostMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            std::uint64_t kibibytes = 0;
            status >> kibibytes;
            return kibibytes;
        }
    }
    return 0;
}

TEST_F(ImpatientServiceTest, ClientsThatAnnounceAGibibyteTakeNoMemoryForWhatTheyDoNotSend) {
    constexpr std::uint64_t kMostGrowth = std::uint64_t{256} << 10;
    const std::uint64_t before = mostMemory();
    ASSERT_GT(before, 0U);
    for (int i = 0; i < 30; ++i) {
        addClient(headerBytes({FrameType::kCommand, 1, 0, 0, Relay::Wire::kLargestBody}) +
                  std::string(1024, 'x'));
        gibibyte.inject();
    }
    expectOthersToBeServed();
    expectAllToBeDropped(gibibyte);
    EXPECT_LT(mostMemory() - before, kMostGrowth);
}

}  // namespace
}  // namespace Orvel::Faults
