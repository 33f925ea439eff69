#include "cli/service_probe.h"

#include <gmock/gmock.h>

#include <set>

#include "cli/failure.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "orvel/relay/rpc_client.h"

namespace Orvel::Tool {
namespace {

namespace Status = Relay::Status;

TEST(ServiceProbeTest, AReachableServiceIsLeftAsItWas) {
    Analytics::Testing::ScriptedEndpoint script;
    EXPECT_EQ(probeService(), 0);
    EXPECT_NO_THROW(requireService());
    EXPECT_TRUE(script.executed.empty());
    EXPECT_EQ(script.closed, 2);
    EXPECT_EQ(script.clientsAlive, 0);
}

TEST(ServiceProbeTest, EveryStatusHasWordsOfItsOwnAndItsNumber) {
    std::set<std::string> texts;
    for (const std::int32_t status :
         {Status::kSuccess, Status::kAccessDenied, Status::kTimeout, Status::kServerUnavailable,
          Status::kConnectionLost, Status::kProtocolError, 87}) {
        const std::string text = describeStatus(status);
        EXPECT_THAT(text, testing::EndsWith("(status " + std::to_string(status) + ")"));
        texts.insert(text.substr(0, text.find('(')));
    }
    EXPECT_EQ(texts.size(), 7U);
}

TEST(ServiceProbeTest, AFailedAttemptIsRaisedWithItsStatus) {
    Analytics::Testing::ScriptedEndpoint script;
    script.openStatus = Status::kProtocolError;
    try {
        requireService();
        FAIL() << "nothing was raised";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), ExitStatus::Unreachable);
        EXPECT_THAT(failure.what(),
                    testing::HasSubstr("does not speak its protocol (status 1728)"));
    }
    EXPECT_EQ(script.closed, 0);
}

}  // namespace
}  // namespace Orvel::Tool
