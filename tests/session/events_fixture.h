#ifndef ORVEL_SESSION_EVENTS_FIXTURE_H
#define ORVEL_SESSION_EVENTS_FIXTURE_H

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <list>
#include <string>
#include <utility>

#include "orvel/analytics.h"
#include "orvel/analytics/testing/scripted_endpoint.h"
#include "support/data_classes.h"
#include "support/fake_clock.h"
#include "support/session_access.h"
#include "support/time_zone.h"

namespace Orvel::TestSupport {

using Analytics::Session::SessionAccess;

/// A session and a data class, with a scripted service.
class Events : public testing::Test {
  protected:
    Events() { setCurrentTime(kSomeTime); }

    int collect(TestDataClass& dataClass, WideString event) {
        return static_cast<int>(session.CollectEvent(&dataClass, std::move(event)));
    }
    int send() { return static_cast<int>(session.SendEvents()); }
    int registerClass(TestDataClass& dataClass) {
        return static_cast<int>(session.RegisterDataClass(&dataClass));
    }
    std::list<WideString>& queue() { return SessionAccess::eventQueue(session); }
    Analytics::Session::AppSession& identity() { return SessionAccess::appSession(session); }

    /// The batch document of the last send.
    nlohmann::json sent() const {
        const std::string command = toUtf8(script.executed.back().command);
        const std::string framing = "MyApp::COLLECT_DATACLASS::";
        EXPECT_TRUE(command.starts_with(framing)) << command;
        return nlohmann::json::parse(command.substr(framing.size()));
    }

    Analytics::Testing::ScriptedEndpoint script;
    const TimeZone zone{"UTC0"};
    AnalyticsSession session{ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.2")};
    TestDataClass evt{{field(ORVEL_TEXT("count"), ORVEL_TEXT("integer"))}};
};

}  // namespace Orvel::TestSupport

#endif
