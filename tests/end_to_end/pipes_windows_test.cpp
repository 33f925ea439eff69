/// The library as a DLL, its RPC client as another, and a service behind a named pipe.

#include <gtest/gtest.h>

#include "end_to_end/pipe_service_windows.h"
#include "orvel/analytics.h"
#include "support/data_classes.h"

namespace {

using Orvel::WideString;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Orvel::TestSupport::field;
using Orvel::TestSupport::PipeService;
using Orvel::TestSupport::TestDataClass;

const WideString kHandshake = ORVEL_TEXT("MyApp::CONNECT_APP::");

/// Acknowledges the handshake, and answers every command with `reply`.
auto answering(WideString reply) {
    return [reply = std::move(reply)](const WideString& command) {
        return command == kHandshake ? ORVEL_TEXT("MyApp::ACK::") : reply;
    };
}

class OverPipes : public testing::Test {
  protected:
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1")};
    TestDataClass dataClass{{field(ORVEL_TEXT("text"), ORVEL_TEXT("varchar(10)"))}};
};

TEST_F(OverPipes, EventsReachTheService) {
    PipeService service(answering(ORVEL_TEXT("MyApp::SUCCESS::")));
    EXPECT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::Success);
    EXPECT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"text\":\"漢\U0001F600\"}")),
              AnalyticsResult::Success);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
    service.stop();
    ASSERT_EQ(service.commands().size(), 4U);
    EXPECT_TRUE(service.commands()[1].starts_with(ORVEL_TEXT("MyApp::REGISTER_DATACLASS::{")));
    EXPECT_TRUE(service.commands()[3].starts_with(ORVEL_TEXT("MyApp::COLLECT_DATACLASS::{")));
    EXPECT_NE(service.commands()[3].find(ORVEL_TEXT("\"text\":\"漢\U0001F600\"")),
              WideString::npos);
}

TEST_F(OverPipes, TheServicesErrorArrivesAsItsResult) {
    const PipeService service(answering(
        ORVEL_TEXT("MyApp::REGISTER_DATACLASS::{\"Results\":[\"ErrorCode :QuotaExceeded\"]}")));
    EXPECT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::QuotaExceeded);
}

TEST_F(OverPipes, ALongBatchArrivesWhole) {
    PipeService service(answering(ORVEL_TEXT("MyApp::SUCCESS::")));
    const WideString event =
        ORVEL_TEXT("{\"other\":\"") + WideString(10'000, 'x') + ORVEL_TEXT("\"}");
    for (int count = 0; count < 50; ++count) {
        ASSERT_EQ(session.CollectEvent(&dataClass, event), AnalyticsResult::Success);
    }
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
    service.stop();
    EXPECT_GT(service.commands().at(1).size(), 500'000U);
    EXPECT_TRUE(service.commands().at(1).ends_with(ORVEL_TEXT("}]}]}")));
}

TEST_F(OverPipes, NobodyThereIsAServiceThatIsUnavailable) {
    Orvel::TestSupport::pipeOfThisProcess();
    EXPECT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::ServiceUnavailable);
}

}  // namespace
