#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "cli/consent_fixture.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Tool {
namespace {

using nlohmann::json;

class ConsentJsonTest : public ConsentTest {
  protected:
    json runJson(std::vector<std::string> arguments) {
        arguments.emplace_back("--json");
        const ToolRun result = run(std::move(arguments));
        EXPECT_EQ(result.out.find('\n'), result.out.size() - 1) << "one object on one line";
        json object = json::parse(result.out);
        EXPECT_EQ(object.at("exit_status"), result.status);
        return object;
    }
};

json succeeded(json object) {
    object.update({{"result", "Success"}, {"code", 0}, {"exit_status", 0}, {"error", nullptr}});
    return object;
}

TEST_F(ConsentJsonTest, GetHasTheRecordWithTheMembersOfTheService) {
    EXPECT_EQ(runJson({"consent", "get"}), succeeded({{"consent", record}}));
}

TEST_F(ConsentJsonTest, SetHasTheRecordThatTheServiceHasThen) {
    const json object = runJson({"consent", "set", "--product-enhancement", "rejected"});
    EXPECT_EQ(object, succeeded({{"changed", true}, {"consent", record}}));
    EXPECT_EQ(object["consent"]["processing_permissions"]["product_enhancement"], "Rejected");
}

TEST_F(ConsentJsonTest, DocumentsHasTheAddresses) {
    EXPECT_EQ(runJson({"documents"}),
              succeeded({{"privacy_documents", record["privacy_documents"]}}));
}

TEST_F(ConsentJsonTest, KeepsEveryCharacterOfATextAlsoU0000) {
    record["tenant"] = std::string("a\0b", 3);
    EXPECT_EQ(runJson({"consent", "get"}).at("consent"), record);
}

TEST_F(ConsentJsonTest, ARefusalHasItsNameAndNumber) {
    refuse("SET_CONSENT", "UnableToSetConsentForManagedDevice");
    const json object = runJson({"consent", "set", "--marketing", "rejected"});
    EXPECT_EQ(object.at("result"), "UnableToSetConsentForManagedDevice");
    EXPECT_EQ(object.at("code"), 19);
    EXPECT_EQ(object.at("exit_status"), 1);
    EXPECT_EQ(object.at("changed"), false);
    EXPECT_EQ(object.at("consent"), nullptr);
    EXPECT_THAT(object.at("error").get<std::string>(), testing::HasSubstr("(19)"));
}

TEST_F(ConsentJsonTest, AnUnreachableServiceHasAReasonAndNoResult) {
    script.openStatus = Relay::Status::kTimeout;
    for (const auto& command : everyCommand()) {
        const json object = runJson(command);
        EXPECT_EQ(object.at("exit_status"), 3);
        EXPECT_EQ(object.at("result"), nullptr);
        EXPECT_EQ(object.at("code"), nullptr);
        EXPECT_THAT(object.at("error").get<std::string>(),
                    testing::HasSubstr("did not answer in time (status 1460)"));
    }
}

TEST_F(ConsentJsonTest, AChangeThatCannotBeReadBackIsChangedWithoutARecord) {
    leaveAfter(3);
    const json object = runJson({"consent", "set", "--marketing", "rejected"});
    EXPECT_EQ(object.at("changed"), true);
    EXPECT_EQ(object.at("consent"), nullptr);
    EXPECT_EQ(object.at("exit_status"), 3);
}

TEST_F(ConsentJsonTest, AReplyThatCannotBeReadIsStatus4) {
    replies["GET_PRIVACY_DOCUMENTS"] = "nonsense";
    const json object = runJson({"documents"});
    EXPECT_EQ(object.at("exit_status"), 4);
    EXPECT_EQ(object.at("privacy_documents"), nullptr);
}

}  // namespace
}  // namespace Orvel::Tool
