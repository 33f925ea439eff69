/// Sessions on several threads at once, each used by one thread at a time.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "concurrency/running_service.h"
#include "orvel/analytics.h"
#include "support/data_classes.h"
#include "support/session_access.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Emitters::AnalyticsResult;
using Analytics::Session::SessionAccess;
using Permission = ProcessingPermissions::ProcessingPermissionValue;

constexpr int kThreads = 6;
constexpr int kRounds = 8;
constexpr int kEvents = 3;

TestDataClass clickClass() {
    TestDataClass dataClass({field(ORVEL_TEXT("n"), ORVEL_TEXT("integer"), ORVEL_TEXT("false")),
                             field(ORVEL_TEXT("s"), ORVEL_TEXT("varchar(8)"))});
    dataClass.dateTime = 0;
    return dataClass;
}

WideString clickEvent(int number) {
    return toWide("{\"n\":" + std::to_string(number) + ",\"s\":\"word\"}");
}

/// The numbers of the events that are stored.
std::vector<int> storedNumbers(const RunningService& service) {
    std::vector<int> numbers;
    for (const std::string& values : service.storedEvents()) {
        numbers.push_back(std::stoi(values.substr(std::string("{\"n\":").size())));
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<int> numbersUpTo(int end) {
    std::vector<int> numbers;
    for (int number = 0; number < end; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

TEST(SessionsOnThreads, SendEveryEventOnce) {
    RunningService service;
    onThreads(kThreads, [](int thread) {
        AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.0"));
        TestDataClass dataClass = clickClass();
        dataClass.dateTime = 1;
        for (int round = 0; round < kRounds; ++round) {
            EXPECT_EQ(session.RegisterDataClass(&dataClass), AnalyticsResult::Success);
            for (int event = 0; event < kEvents; ++event) {
                const int number = (thread * kRounds + round) * kEvents + event;
                EXPECT_EQ(session.CollectEvent(&dataClass, clickEvent(number)),
                          AnalyticsResult::Success);
            }
            EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
        }
    });
    EXPECT_EQ(storedNumbers(service), numbersUpTo(kThreads * kRounds * kEvents));
    service.stop();
    EXPECT_EQ(service.complaints(), 0U);
}

TEST(SessionsOnThreads, ReadAndChangeTheConsentThatTheyShare) {
    RunningService service;
    onThreads(kThreads, [](int thread) {
        AnalyticsSession session(toWide("App" + std::to_string(thread)), ORVEL_TEXT("1.0"));
        ProcessingPermissions permissions;
        permissions.marketing = permissions.support = permissions.productEnhancement =
            thread % 2 == 0 ? Permission::Accepted : Permission::Rejected;
        for (int round = 0; round < kRounds; ++round) {
            EXPECT_EQ(session.SetConsent(permissions), AnalyticsResult::Success);
            ConsentObject consent;
            EXPECT_EQ(session.GetConsent(&consent), AnalyticsResult::Success);
            // Whoever has set it last, it was set as a whole.
            EXPECT_NE(consent.processingPermissions.marketing, Permission::Unknown);
            EXPECT_EQ(consent.processingPermissions.marketing,
                      consent.processingPermissions.support);
            EXPECT_EQ(consent.processingPermissions.marketing,
                      consent.processingPermissions.productEnhancement);
            PrivacyDocuments documents;
            EXPECT_EQ(session.GetDocumentURLs(&documents), AnalyticsResult::Success);
        }
    });
    service.stop();
    EXPECT_EQ(service.complaints(), 0U);
}

TEST(SessionsOnThreads, CheckEventsWithoutDisturbingEachOther) {
    constexpr int kMore = 40;
    onThreads(kThreads, [](int thread) {
        AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.0"));
        TestDataClass dataClass = clickClass();
        for (int event = 0; event < kMore; ++event) {
            const int number = thread * kMore + event;
            EXPECT_EQ(session.CollectEvent(&dataClass, clickEvent(number)),
                      AnalyticsResult::Success);
            EXPECT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"n\":\"1\"}")),
                      AnalyticsResult::GenericError);
            EXPECT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"s\":\"nine long\"}")),
                      AnalyticsResult::FieldValueTooLong);
            EXPECT_EQ(session.CollectEvent(&dataClass, ORVEL_TEXT("{\"n\":")),
                      AnalyticsResult::MalformedJson);
            EXPECT_EQ(toUtf8(SessionAccess::eventQueue(session).back()),
                      "{\"Evt\":{\"n\":" + std::to_string(number) +
                          ",\"s\":\"word\",\"DT\":\"\",\"V\":\"\"}}");
        }
    });
}

TEST(SessionsOnThreads, GoOnWhereAnotherThreadLeftThem) {
    std::vector<AnalyticsSession> sessions(
        kThreads, AnalyticsSession(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1.0")));
    for (int round = 0; round < kRounds; ++round) {
        onThreads(kThreads, [&](int thread) {
            TestDataClass dataClass = clickClass();
            // Each time another thread's.
            AnalyticsSession& session =
                sessions[static_cast<std::size_t>((thread + round) % kThreads)];
            EXPECT_EQ(session.CollectEvent(&dataClass, clickEvent(round)),
                      AnalyticsResult::Success);
        });
    }
    for (AnalyticsSession& session : sessions) {
        EXPECT_EQ(SessionAccess::eventQueue(session).size(), static_cast<std::size_t>(kRounds));
    }
}

}  // namespace
}  // namespace Orvel::TestSupport
