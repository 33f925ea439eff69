#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <string>

#include "faults/ledger.h"
#include "faults/reporter.h"
#include "support/fault_table.h"
#include "support/service_process.h"
#include "support/temporary_folder.h"

/// The whole service when it cannot store, and when it is told to end while it does.

namespace Orvel::Faults {
namespace {

using Support::Fault;
using Support::ServiceProcess;
using testing::HasSubstr;
using testing::StartsWith;

Fault readOnlyFolder{"the data folder is read-only"};
Fault noSpace{"files of the service must not grow any more"};
Fault moved{"the data folder is moved away while the service runs"};
Fault vanished{"the data folder vanishes while the service runs"};
Fault logVanished{"the database's log vanishes while the service runs"};
Fault told{"the service is told to end while eight clients send"};

/// A program that runs the service under a restriction.
std::filesystem::path restricted(const std::filesystem::path& folder, const std::string& how) {
    const auto program = folder / "restricted";
    std::ofstream(program) << "#!/bin/bash\n" << how << '\n';
    std::filesystem::permissions(program, std::filesystem::perms(0755));
    return program;
}

std::filesystem::path database(const ServiceProcess& service) {
    return service.dataFolder() / "analytics.db";
}

/// Registers one class after the other: what is too much for a batch may be enough for a few.
/// @return the first answer that is not success.
std::string answerToRegistrations(Reporter& reporter) {
    for (int number = 0;; ++number) {
        std::string answer =
            reporter.say(R"(::REGISTER_DATACLASS::{"name":"","id":"C)" + std::to_string(number) +
                         R"(","version":"1","fields":[]})");
        if (answer != "::SUCCESS::") {
            return answer;
        }
    }
}

class StorageTest : public testing::Test {
  protected:
    void start() {
        service_.start();
        service_.useEndpoint();
        ASSERT_TRUE(reporter_.connect());
        ASSERT_TRUE(reporter_.report(ledger_, 5));
    }

    /// Sends a batch, which must be refused; the connection lives on, and the log says why.
    void expectRefusal(const std::string& reason) {
        EXPECT_TRUE(reporter_.report(ledger_, 5));
        EXPECT_THAT(reporter_.say("::COLLECT_DATACLASS::{"), HasSubstr("ErrorCode :MalformedJson"));
        EXPECT_THAT(service_.nextLine(), HasSubstr(reason));
    }

    Support::TemporaryFolder folder_;
    ServiceProcess service_{ORVEL_ANALYTICSD};
    Reporter reporter_;
    Ledger ledger_;
};

// Root may write everywhere, so the service runs as somebody else then.
TEST_F(StorageTest, FolderThatIsReadOnlyKeepsTheServiceFromStarting) {
    const auto data = folder_.path() / "data";
    const auto copy = folder_.path() / "service";
    std::filesystem::create_directory(data);
    std::filesystem::permissions(data, std::filesystem::perms(0500));
    std::string command = ORVEL_ANALYTICSD;
    if (::geteuid() == 0) {
        constexpr uid_t kNobody = 65534;
        ASSERT_EQ(::chown(data.c_str(), kNobody, kNobody), 0);
        std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
        std::filesystem::copy_file(ORVEL_ANALYTICSD, copy);
        std::filesystem::permissions(copy, std::filesystem::perms(0755));
        command = "setpriv --reuid=65534 --regid=65534 --clear-groups " + copy.string();
    }
    readOnlyFolder.inject();
    const auto output = Support::runProgram(
        restricted(folder_.path(),
                   "exec " + command + " serve --settings /dev/null --data " + data.string()),
        {}, {"ORVEL_RPC_DIRECTORY=" + folder_.path().string()});
    EXPECT_EQ(output.status, 1);
    EXPECT_THAT(output.error, HasSubstr("Permission denied"));
    EXPECT_THAT(output.error, HasSubstr(data.string()));
    readOnlyFolder.observe();
}

TEST_F(StorageTest, WhatFindsNoSpaceIsRefusedAndTheRestIsKept) {
    ServiceProcess small(restricted(
        folder_.path(), "ulimit -f 256\nexec " + std::string(ORVEL_ANALYTICSD) + " \"$@\""));
    small.start();
    small.useEndpoint();
    Reporter reporter;
    ASSERT_TRUE(reporter.connect());
    std::uint64_t acknowledged = 0;
    do {
        acknowledged = ledger_.acknowledged();
        ASSERT_TRUE(reporter.report(ledger_, 500));
    } while (ledger_.acknowledged() > acknowledged);
    noSpace.inject();
    ASSERT_GT(acknowledged, 0U);
    EXPECT_THAT(small.nextLine(), HasSubstr(R"("event":"storage_error")"));
    EXPECT_EQ(answerToRegistrations(reporter),
              R"(::REGISTER_DATACLASS::{"Results":["ErrorCode :ErrorIODataclassRegistration"]})");
    EXPECT_THAT(reporter.say("::GET_CONSENT::"), StartsWith("::CONSENT_RECORD::"));
    small.kill();
    const Account account = ledger_.account(storedNumbers(database(small)));
    EXPECT_TRUE(account.isKept()) << account.text();
    EXPECT_EQ(integrityOf(database(small)), "ok");
    noSpace.observe();
}

TEST_F(StorageTest, NothingIsAcknowledgedWhileTheFolderIsAway) {
    start();
    const auto away = folder_.path() / "away";
    std::filesystem::rename(service_.dataFolder(), away);
    moved.inject();
    expectRefusal("gone from its place");
    std::filesystem::rename(away, service_.dataFolder());
    EXPECT_TRUE(reporter_.report(ledger_, 5)) << "it is back";
    const Account account = ledger_.account(storedNumbers(database(service_)));
    EXPECT_TRUE(account.isKept()) << account.text();
    EXPECT_EQ(account.acknowledged, 10U);
    EXPECT_EQ(account.refused, 5U);
    moved.observe();
}

TEST_F(StorageTest, NothingIsAcknowledgedWhenTheFolderHasVanished) {
    start();
    std::filesystem::remove_all(service_.dataFolder());
    vanished.inject();
    expectRefusal("gone from its place");
    EXPECT_EQ(ledger_.acknowledged(), 5U);
    EXPECT_EQ(service_.stop(), 0);
    start();
    EXPECT_EQ(storedNumbers(database(service_)).size(), 5U) << "a new folder, a new database";
    vanished.observe();
}

TEST_F(StorageTest, NothingIsAcknowledgedWhenTheLogHasVanished) {
    start();
    std::filesystem::remove(database(service_).string() + "-wal");
    logVanished.inject();
    expectRefusal("gone from its place");
    EXPECT_EQ(ledger_.acknowledged(), 5U);
    logVanished.observe();
}

TEST_F(StorageTest, EveryRequestIsAnsweredOrRefusedWhenTheServiceIsToldToEnd) {
    constexpr int kRounds = 5;
    std::mt19937_64 random(20'240'131);
    std::uniform_int_distribution<std::uint64_t> events(1, 300);
    for (int round = 0; round < kRounds; ++round) {
        service_.start();
        service_.useEndpoint();
        const std::uint64_t before = ledger_.acknowledged();
        Crowd crowd(ledger_, 8, random());
        crowd.waitFor(events(random));
        told.inject();
        EXPECT_EQ(service_.stop(), 0);
        crowd.finish(false);
        EXPECT_GT(ledger_.acknowledged(), before);
        const Account account = ledger_.account(storedNumbers(database(service_)));
        EXPECT_TRUE(account.isKept()) << account.text();
        EXPECT_EQ(account.unanswered, 0U) << "what is stored was acknowledged";
        EXPECT_EQ(integrityOf(database(service_)), "ok");
        told.observe();
    }
}

}  // namespace
}  // namespace Orvel::Faults
