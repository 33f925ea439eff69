/// The example as a process, against the real service.

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <zlib.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/service_process.h"

namespace PackageHistory {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class PackageHistoryTest : public testing::Test {
  protected:
    std::filesystem::path path(const std::string& name) const { return folder.path() / name; }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

    Orvel::Support::Process::Output report(const std::vector<std::string>& logs) const {
        return Orvel::Support::runProgram(
            ORVEL_PACKAGE_HISTORY, logs,
            {"ORVEL_RPC_DIRECTORY=" + service.endpointFolder().string()});
    }

    std::vector<json> stored() const {
        std::vector<json> events;
        std::istringstream lines(service.run({"events", "--good", "--json"}).out);
        for (std::string line; std::getline(lines, line);) {
            events.push_back(json::parse(line));
        }
        return events;
    }

    Orvel::Support::TemporaryFolder folder;
    Orvel::Support::ServiceProcess service{ORVEL_SERVICE_PROGRAM};
};

TEST_F(PackageHistoryTest, EveryEntryOfTheSampleIsStoredInItsOrderWithItsTime) {
    service.start();
    const auto result = report({ORVEL_SAMPLE_LOG});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("registered data class package_log_entry, version 1.0"));

    const std::vector<json> events = stored();
    std::ifstream log(ORVEL_SAMPLE_LOG);
    std::size_t count = 0;
    for (std::string line; std::getline(log, line); ++count) {
        ASSERT_LT(count, events.size());
        const json& values = events[count].at("values");
        EXPECT_EQ(values.at("time"), line.substr(0, 19));
        EXPECT_THAT(line.substr(20), testing::StartsWith(values.at("action").get<std::string>()));
        std::string stamp = line.substr(0, 10) + "T" + line.substr(11, 8);
        std::erase_if(stamp, [](char c) { return c == '-' || c == ':'; });
        EXPECT_EQ(events[count].at("time"), stamp);
    }
    EXPECT_EQ(events.size(), count);
    EXPECT_GE(count, 150U);
}

TEST_F(PackageHistoryTest, RotatedLogsAreReportedOldestFirst) {
    const std::string oldest = "2024-01-01 00:00:00 startup archives unpack\n";
    gzFile file = gzopen(path("dpkg.log.2.gz").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    gzwrite(file, oldest.data(), static_cast<unsigned>(oldest.size()));
    gzclose(file);
    write("dpkg.log.1", "2024-02-01 00:00:00 install a:amd64 <none> 1\n");
    write("dpkg.log", "2024-03-01 00:00:00 remove a:amd64 1 <none>\n");
    service.start();
    const auto result = report({path("dpkg.log").string()});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("sent 3 events in 1 batches"));
    std::vector<std::string> actions;
    for (const json& event : stored()) {
        actions.push_back(event.at("values").at("action"));
    }
    EXPECT_THAT(actions, ElementsAre("startup", "install", "remove"));
}

TEST_F(PackageHistoryTest, ALineThatIsNoEntryIsToldAndTheRestIsReported) {
    write("dpkg.log",
          "2024-03-01 00:00:00 remove a:amd64 1 <none>\n"
          "half a li\n"
          "\n"
          "2024-03-01 00:00:00 purge caf\xE9:amd64 1 <none>\n"
          "2024-03-01 00:00:01 purge a:amd64 1 <none>\n");
    service.start();
    const auto result = report({path("dpkg.log").string()});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("dpkg.log:2: this line cannot be reported: "));
    EXPECT_THAT(result.error, HasSubstr("dpkg.log:4: this line cannot be reported: "));
    EXPECT_EQ(stored().size(), 2U);
}

TEST_F(PackageHistoryTest, ManyEntriesGoInBatches) {
    std::string log;
    for (int i = 0; i < 2001; ++i) {
        log += "2024-03-01 00:00:00 remove a:amd64 " + std::to_string(i) + " <none>\n";
    }
    write("dpkg.log", log);
    service.start();
    const auto result = report({path("dpkg.log").string()});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("sent 2001 events in 3 batches"));
    EXPECT_EQ(service.run({"events", "--good", "--count"}).out, "2001\n");
}

TEST_F(PackageHistoryTest, ALogThatIsMissingIsAnError) {
    service.start();
    const auto result = report({path("none.log").string()});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("there is no such log"));
}

TEST_F(PackageHistoryTest, AServiceThatIsNotRunningIsTold) {
    const auto result = report({ORVEL_SAMPLE_LOG});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("the analytics service is not running"));
}

}  // namespace
}  // namespace PackageHistory
