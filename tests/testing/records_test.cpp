/// What the service has recorded, as parsed values.

#include <sstream>
#include <string>

#include "testing/session_fixture.h"

namespace Orvel::Analytics::Testing {
namespace {

using Permission = ProcessingPermissions::ProcessingPermissionValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Records = SessionWithService;

TEST_F(Records, HaveDataClassesWithTheirFields) {
    session.RegisterDataClass(&click);
    service.answerNext(Step::RegisterDataClass, Answer::error(AnalyticsResult::MalformedDataclass));
    session.RegisterDataClass(&click);
    const auto registrations = service.registrations();
    ASSERT_THAT(registrations, SizeIs(2));
    EXPECT_EQ(registrations[0].application, "MyApp");
    EXPECT_EQ(registrations[0].id, "click");
    EXPECT_EQ(registrations[0].name, "Event");
    EXPECT_EQ(registrations[0].version, "1.0");
    EXPECT_THAT(registrations[0].fields,
                ElementsAre(RegisteredField{"button", "button name", "true", "varchar(20)"},
                            RegisteredField{"count", "count name", "false", "integer"}));
    EXPECT_TRUE(registrations[0].accepted);
    EXPECT_FALSE(registrations[1].accepted);
}

TEST_F(Records, HaveBatchesWithTheirEvents) {
    session.SetStartTime(0);
    session.RegisterDataClass(&click);
    click.dateTime = 0;
    collect(R"({"button":"save","DT":"mine"})");
    collect(R"({"count":2,"nested":{"V":[1.50,null,true]}})");
    session.SendEvents();
    session.SendEvents();
    const auto batches = service.batches();
    ASSERT_THAT(batches, SizeIs(2));
    const Batch& batch = batches[0];
    EXPECT_EQ(batch.application, "MyApp");
    EXPECT_EQ(batch.applicationVersion, "1.2");
    EXPECT_EQ(batch.userId, "{0f8fad5b-d9cb-469f-a165-70867728950e}");
    EXPECT_EQ(batch.environment, "Production");
    EXPECT_EQ(batch.sessionId.size(), 36U);
    EXPECT_EQ(batch.sessionCounter, 0);
    EXPECT_FALSE(batch.deviceId.empty());
    EXPECT_EQ(batch.started, "");
    EXPECT_EQ(batch.version, "1.0");
    EXPECT_TRUE(batch.accepted);
    ASSERT_THAT(batch.events, SizeIs(2));
    EXPECT_EQ(batch.events[0].dataClass, "click");
    EXPECT_EQ(batch.events[0].time, "");
    EXPECT_EQ(batch.events[0].version, "1.0");
    EXPECT_EQ(batch.events[0].values, Value::parse(R"({"button":"save"})"));
    EXPECT_EQ(batch.events[1].values.at("count"), 2);
    EXPECT_EQ(batch.events[1].values.at("nested").at("V").at(2), true);
    EXPECT_THAT(batches[1].events, IsEmpty());
    EXPECT_NE(batches[1].sessionId, batch.sessionId);
}

TEST_F(Records, HaveTheEventsOfAcceptedBatchesOnly) {
    collect(R"({"count":1})");
    session.SendEvents();
    collect(R"({"count":2})");
    service.answerNext(Step::SendEvents, Answer::error(AnalyticsResult::QuotaExceeded));
    session.SendEvents();
    collect(R"({"count":3})");
    session.SendEvents();
    const auto events = service.events();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0].values.at("count"), 1);
    EXPECT_EQ(events[1].values.at("count"), 3);
    ASSERT_THAT(service.batches(), SizeIs(3));
    EXPECT_FALSE(service.batches()[1].accepted);
    EXPECT_EQ(service.batches()[1].events[0].values.at("count"), 2);
}

TEST_F(Records, HaveTextsOfAnyScript) {
    click.id = ORVEL_TEXT("\u6F22\U0001F4DD\u00E9");
    collect("{\"button\":\"\xC3\xA9\xF0\x9F\x93\x9D\\u0000\"}");
    session.SendEvents();
    ASSERT_THAT(service.events(), SizeIs(1));
    EXPECT_EQ(service.events()[0].dataClass, "\xE6\xBC\xA2\xF0\x9F\x93\x9D\xC3\xA9");
    EXPECT_EQ(service.events()[0].values.at("button"),
              std::string("\xC3\xA9\xF0\x9F\x93\x9D\0", 7));
}

TEST_F(Records, HaveAReplacementForAnUnpairedSurrogate) {
    click.name = WideString(1, 0xD83D) + ORVEL_TEXT("x");
    click.version = ORVEL_TEXT("y") + WideString(1, 0xDCDD);
    session.RegisterDataClass(&click);
    ASSERT_THAT(service.registrations(), SizeIs(1));
    EXPECT_EQ(service.registrations()[0].name, "\xEF\xBF\xBDx");
    EXPECT_EQ(service.registrations()[0].version, "y\xEF\xBF\xBD");
}

TEST_F(Records, HaveChangesOfTheConsent) {
    ProcessingPermissions wanted;
    wanted.support = Permission::Accepted;
    session.SetConsent(wanted);
    service.answerNext(Step::SetConsent, Answer::status(1726));
    session.SetConsent({});
    const auto changes = service.consentChanges();
    ASSERT_THAT(changes, SizeIs(2));
    EXPECT_EQ(changes[0].application, "MyApp");
    EXPECT_EQ(changes[0].permissions.support, Permission::Accepted);
    EXPECT_EQ(changes[0].permissions.marketing, Permission::Unknown);
    EXPECT_TRUE(changes[0].accepted);
    EXPECT_FALSE(changes[1].accepted);
}

TEST_F(Records, HaveCommandsWordForWord) {
    ConsentObject consent;
    session.GetConsent(&consent);
    PrivacyDocuments documents;
    session.GetDocumentURLs(&documents);
    EXPECT_THAT(service.commands(), ElementsAre(ORVEL_TEXT("MyApp::GET_CONSENT::"),
                                                ORVEL_TEXT("MyApp::GET_PRIVACY_DOCUMENTS::")));
    EXPECT_EQ(service.connections(), 2U);
}

TEST_F(Records, AreForgotten) {
    service.answer(Step::RegisterDataClass, Answer::error(AnalyticsResult::MalformedDataclass));
    session.RegisterDataClass(&click);
    session.SendEvents();
    service.forget();
    EXPECT_THAT(service.commands(), IsEmpty());
    EXPECT_THAT(service.batches(), IsEmpty());
    EXPECT_EQ(service.connections(), 0U);
    EXPECT_EQ(session.RegisterDataClass(&click), AnalyticsResult::MalformedDataclass)
        << "answers stay";
}

TEST(AnEvent, IsPrintedInOneLine) {
    std::ostringstream out;
    out << Event{"click", Value::parse(R"({"a":[1]})"), "20240131T235959", "1.0"};
    EXPECT_EQ(out.str(), R"(click {"a":[1]}, time "20240131T235959", version "1.0")");
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
