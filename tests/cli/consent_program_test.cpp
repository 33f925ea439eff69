/// The tool's consent commands as processes, against the real service.

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

#include "support/service_process.h"

namespace Orvel::Tool {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kSettings = R"(device_serial_number = "SN-漢-1"
country_code = "PT"
tenant = "tenant"
[privacy_documents]
privacyurl = "https://example.com/privacy"
warrantyurl = "https://example.com/warranty"
telemetryurl = "https://example.com/telemetry"
)";

class ConsentProgramTest : public testing::Test {
  protected:
    ConsentProgramTest() { service.useSettings(kSettings); }

    Support::Process::Output tool(const std::vector<std::string>& arguments) const {
        return Support::runProgram(ORVEL_TOOL_PROGRAM, arguments,
                                   {"ORVEL_RPC_DIRECTORY=" + service.endpointFolder().string()});
    }

    json toolJson(std::vector<std::string> arguments) const {
        arguments.emplace_back("--json");
        const auto result = tool(arguments);
        EXPECT_EQ(result.status, 0) << result.error;
        return json::parse(result.out);
    }

    json permissions() const {
        return toolJson({"consent", "get"}).at("consent").at("processing_permissions");
    }

    static json answers(const char* marketing, const char* support, const char* enhancement) {
        return {
            {"marketing", marketing}, {"support", support}, {"product_enhancement", enhancement}};
    }

    Support::ServiceProcess service{ORVEL_SERVICE_PROGRAM};
};

TEST_F(ConsentProgramTest, GetShowsTheRecordOfTheService) {
    service.start();
    const json record = toolJson({"consent", "get"}).at("consent");
    EXPECT_EQ(record.at("device_serial_number"), "SN-漢-1");
    EXPECT_EQ(record.at("country_code"), "PT");
    EXPECT_EQ(record.at("tenant"), "tenant");
    EXPECT_EQ(record.at("managed"), false);
    EXPECT_EQ(record.at("process_data"), true);
    EXPECT_EQ(record.at("processing_permissions"), answers("Unknown", "Unknown", "Unknown"));
    const auto result = tool({"consent", "get"});
    EXPECT_THAT(result.out, AllOf(StartsWith("marketing             unknown\n"),
                                  HasSubstr("device serial number  SN-漢-1\n")));
}

TEST_F(ConsentProgramTest, DocumentsShowsTheAddressesOfTheService) {
    service.start();
    EXPECT_EQ(tool({"documents"}).out,
              "privacy statement     https://example.com/privacy\n"
              "warranty              https://example.com/warranty\n"
              "telemetry statement   https://example.com/telemetry\n");
}

TEST_F(ConsentProgramTest, SetChangesOnlyWhatIsNamedAndShowsIt) {
    service.start();
    const json first = toolJson({"consent", "set", "--marketing", "rejected"});
    EXPECT_EQ(first.at("changed"), true);
    EXPECT_EQ(first.at("consent").at("processing_permissions"),
              answers("Rejected", "Unknown", "Unknown"));
    const auto second =
        tool({"consent", "set", "--support", "accepted", "--product-enhancement", "rejected"});
    EXPECT_EQ(second.status, 0) << second.error;
    EXPECT_THAT(second.out, StartsWith("the consent has been changed\n"
                                       "marketing             rejected\n"
                                       "support               accepted\n"
                                       "product enhancement   rejected\n"));
    EXPECT_EQ(permissions(), answers("Rejected", "Accepted", "Rejected"));
}

TEST_F(ConsentProgramTest, AChangeOutlivesTheServicesSuddenEnd) {
    service.start();
    EXPECT_EQ(tool({"consent", "set", "--support", "accepted", "--app", "editor"}).status, 0);
    service.kill();
    service.start();
    EXPECT_EQ(permissions(), answers("Unknown", "Accepted", "Unknown"));
}

TEST_F(ConsentProgramTest, AManagedDeviceRefusesTheChange) {
    service.useSettings("managed = true\n");
    service.start();
    const auto result = tool({"consent", "set", "--marketing", "accepted"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("UnableToSetConsentForManagedDevice (19)"));
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_EQ(permissions(), answers("Unknown", "Unknown", "Unknown"));
}

TEST_F(ConsentProgramTest, NobodyListeningIsStatus3ForEveryCommand) {
    for (const std::vector<std::string>& command : {std::vector<std::string>{"consent", "get"},
                                                    {"consent", "set", "--marketing", "accepted"},
                                                    {"documents"}}) {
        const auto result = tool(command);
        EXPECT_EQ(result.status, 3);
        EXPECT_THAT(result.error, HasSubstr("(status 1722)"));
        EXPECT_THAT(result.out, IsEmpty());
    }
}

TEST_F(ConsentProgramTest, ReportTellsThatDataMustNotBeStored) {
    service.useSettings("process_data = false\n");
    service.start();
    const Support::TemporaryFolder folder;
    const auto dataClass = folder.path() / "class.json";
    const auto events = folder.path() / "events.jsonl";
    std::ofstream(dataClass) << R"({"name":"n","id":"note","version":"1","fields":[]})";
    std::ofstream(events) << "{\"a\":1}\n";
    const auto result = tool({"report", "--app", "a", "--app-version", "1", "--data-class",
                              dataClass.string(), events.string()});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("NotRightAccessToWrite (18)"));
    EXPECT_EQ(service.run({"events", "--count"}).out, "0\n");
}

}  // namespace
}  // namespace Orvel::Tool
