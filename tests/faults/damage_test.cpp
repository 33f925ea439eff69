#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "faults/ledger.h"
#include "faults/reporter.h"
#include "support/fault_table.h"
#include "support/service_process.h"

/// The service when its data is not what it left behind.

namespace Orvel::Faults {
namespace {

using nlohmann::json;
using Support::Fault;
using Support::ServiceProcess;
using testing::HasSubstr;

Fault damaged{"the database is damaged at the start"};
Fault damagedAgain{"the next database is damaged as well"};
Fault newer{"the database is of a newer version"};
Fault foreign{"the database is another program's"};
Fault openFolder{"the data folder is open to other users"};
Fault secondOnData{"a second service starts on the data folder"};
Fault secondOnEndpoint{"a second service starts at the endpoint"};

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void write(const std::filesystem::path& file, const std::string& content) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

constexpr std::size_t kPage = 4096;

/// Ways to damage a database; nothing is left as it was where they strike.
const std::vector<std::function<void(std::string&)>> kDamages = {
    [](std::string& bytes) { bytes.replace(0, 16, "not a database!!"); },
    [](std::string& bytes) { bytes.resize(bytes.size() / 2); },
    [](std::string& bytes) { bytes.resize(100); },
    [](std::string& bytes) { bytes.replace(100, 8, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"); },
    [](std::string& bytes) { bytes.replace(bytes.size() - kPage, kPage, kPage, '\xFF'); },
    [](std::string& bytes) { bytes.replace(kPage, kPage, kPage, '\0'); },
    [](std::string& bytes) {
        std::mt19937 random(7);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    },
};

class DamageTest : public testing::Test {
  protected:
    /// A service that has stored something and has ended.
    void SetUp() override {
        service_.start();
        service_.useEndpoint();
        report(ledger_, 3);
        ASSERT_EQ(service_.stop(), 0);
    }

    static void report(Ledger& ledger, int batches) {
        Reporter reporter;
        ASSERT_TRUE(reporter.connect());
        for (int i = 0; i < batches; ++i) {
            ASSERT_TRUE(reporter.report(ledger, 40));
        }
    }

    std::filesystem::path database() { return service_.dataFolder() / "analytics.db"; }

    /// The name that the log says a damaged database has got; empty when it says nothing of one.
    std::string keptAside() {
        std::string file;
        for (const std::string& line : service_.log()) {
            const json entry = json::parse(line);
            if (entry["event"] == "database_kept_aside") {
                EXPECT_NE(entry["reason"], "");
                file = entry["file"];
            }
        }
        return file;
    }

    void changeWithoutMovingTheLog(const char* statement) {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open(database().c_str(), &handle), SQLITE_OK);
        sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        EXPECT_EQ(sqlite3_exec(handle, statement, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(handle);
    }

    /// What a start that fails logs last.
    std::string failureOfStarting() {
        try {
            service_.start();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "(none)";
    }

    ServiceProcess service_{ORVEL_ANALYTICSD};
    Ledger ledger_;
};

TEST_F(DamageTest, DamagedDatabaseIsKeptAsideAndTheServiceGoesOn) {
    const std::string sound = contentOf(database());
    int number = 0;
    for (const auto& damage : kDamages) {
        std::string bytes = sound;
        damage(bytes);
        write(database(), bytes);
        damaged.inject();
        service_.start();
        const std::string aside = keptAside();
        ASSERT_EQ(aside, database().string() + ".damaged-" + std::to_string(++number));
        EXPECT_EQ(contentOf(aside), bytes);
        Ledger fresh;
        report(fresh, 1);
        EXPECT_EQ(fresh.account(storedNumbers(database())).found, 40U);
        ASSERT_EQ(service_.stop(), 0);
        damaged.observe();
    }
    EXPECT_EQ(storedNumbers(database()).size(), 40U) << "the new database is a sound one";
}

TEST_F(DamageTest, WhatWasKeptAsideStaysAsItIsWhenMoreIsKept) {
    write(database(), std::string(5000, '1'));
    service_.start();
    ASSERT_EQ(service_.stop(), 0);
    const std::string first = keptAside();
    write(database(), std::string(5000, '2'));
    write(database().string() + "-wal", "a log");
    damagedAgain.inject();
    service_.start();
    const std::string second = keptAside();
    EXPECT_NE(first, second);
    EXPECT_EQ(contentOf(first), std::string(5000, '1'));
    EXPECT_EQ(contentOf(second), std::string(5000, '2'));
    EXPECT_EQ(contentOf(second + "-wal"), "a log");
    damagedAgain.observe();
}

/// What is not this version's is refused whether it is in the database's main file or still in its
/// log, as it is after a kill.
TEST_F(DamageTest, DataThatIsNotThisVersionsIsRefusedAndLeftAsItIs) {
    service_.start();
    report(ledger_, 1);
    service_.kill();
    const auto isRefused = [this](Fault& fault, const char* setting, const char* reason) {
        changeWithoutMovingTheLog(setting);
        const std::string bytes = contentOf(database());
        const std::string log = contentOf(database().string() + "-wal");
        ASSERT_FALSE(log.empty());
        fault.inject();
        EXPECT_THAT(failureOfStarting(), HasSubstr(reason));
        EXPECT_EQ(contentOf(database()), bytes);
        EXPECT_EQ(contentOf(database().string() + "-wal"), log);
        fault.observe();
    };
    isRefused(newer, "PRAGMA user_version = 99", "newer version");
    isRefused(foreign, "PRAGMA application_id = 99", "not a database of this program");
}

TEST_F(DamageTest, FolderThatOthersMayLookIntoIsRefused) {
    using std::filesystem::perms;
    for (const perms mode : {perms::group_read, perms::group_write, perms::others_exec}) {
        std::filesystem::permissions(service_.dataFolder(), perms::owner_all | mode);
        openFolder.inject();
        EXPECT_THAT(failureOfStarting(), HasSubstr("chmod 700"));
        openFolder.observe();
    }
    std::filesystem::permissions(service_.dataFolder(), perms::owner_all);
    service_.start();
}

TEST_F(DamageTest, SecondServiceIsRefusedAndTheFirstOneServesOn) {
    service_.start();
    for (int i = 0; i < 3; ++i) {
        const Support::TemporaryFolder elsewhere;
        secondOnData.inject();
        const auto onData = Support::runProgram(
            ORVEL_ANALYTICSD, {"serve", "--data", service_.dataFolder().string()},
            {"ORVEL_RPC_DIRECTORY=" + elsewhere.path().string()});
        EXPECT_EQ(onData.status, 1);
        EXPECT_THAT(onData.error, HasSubstr("another service uses the data folder"));
        secondOnData.observe();
        secondOnEndpoint.inject();
        const auto atEndpoint =
            Support::runProgram(ORVEL_ANALYTICSD, {"serve", "--data", elsewhere.path().string()},
                                {"ORVEL_RPC_DIRECTORY=" + service_.endpointFolder().string()});
        EXPECT_EQ(atEndpoint.status, 1);
        EXPECT_THAT(atEndpoint.error, HasSubstr("another server is running at"));
        secondOnEndpoint.observe();
        report(ledger_, 1);
    }
}

}  // namespace
}  // namespace Orvel::Faults
