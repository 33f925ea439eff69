/// What the service answers, as a session tells it.

#include <memory>
#include <stdexcept>

#include "testing/session_fixture.h"

namespace Orvel::Analytics::Testing {
namespace {

using Permission = ProcessingPermissions::ProcessingPermissionValue;

class Answers : public SessionWithService {
  protected:
    AnalyticsResult registerClass() { return session.RegisterDataClass(&click); }
    AnalyticsResult getConsent() { return session.GetConsent(&consent); }
    AnalyticsResult getDocuments() { return session.GetDocumentURLs(&documents); }

    ConsentObject consent;
    PrivacyDocuments documents;
};

TEST_F(Answers, AreSuccessesUntilToldOtherwise) {
    EXPECT_EQ(registerClass(), AnalyticsResult::Success);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
    EXPECT_EQ(getConsent(), AnalyticsResult::Success);
    EXPECT_EQ(session.SetConsent({}), AnalyticsResult::Success);
    EXPECT_EQ(getDocuments(), AnalyticsResult::Success);
}

/// Every result that a service can name, and no other.
TEST_F(Answers, AreAnyErrorThatAServiceNames) {
    int named = 0;
    for (int number = 0; number < 40; ++number) {
        const auto result = static_cast<AnalyticsResult>(number);
        try {
            service.answer(Step::RegisterDataClass, Answer::error(result));
        } catch (const std::invalid_argument&) {
            continue;
        }
        EXPECT_EQ(registerClass(), result);
        ++named;
    }
    EXPECT_EQ(named, 19);
    EXPECT_THROW(static_cast<void>(Answer::error(AnalyticsResult::Success)), std::invalid_argument);
    EXPECT_THROW(static_cast<void>(Answer::error(AnalyticsResult::ServiceUnavailable)),
                 std::invalid_argument);
}

TEST_F(Answers, AreErrorsByANameThatNobodyKnows) {
    service.answer(Step::SendEvents, Answer::error("OutOfPaper"));
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::GenericError);
}

TEST_F(Answers, AreErrorsForTheStepAlone) {
    service.answer(Step::SendEvents, Answer::error(AnalyticsResult::QuotaExceeded));
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::QuotaExceeded);
    EXPECT_EQ(session.SetConsent({}), AnalyticsResult::Success);
    service.answer(Step::GetConsent, Answer::error(AnalyticsResult::ApplicationNotSigned));
    EXPECT_EQ(getConsent(), AnalyticsResult::ApplicationNotSigned);
    service.answer(Step::SetConsent, Answer::error(AnalyticsResult::MalformedJson));
    EXPECT_EQ(session.SetConsent({}), AnalyticsResult::MalformedJson);
    service.answer(Step::GetDocumentURLs, Answer::error(AnalyticsResult::GenericError));
    EXPECT_THROW(getDocuments(), hresult_error);
}

TEST_F(Answers, OfTheGreetingReachEveryOperationAsTheLibraryReadsThem) {
    service.answer(Step::Greet,
                   Answer::error(AnalyticsResult::ApplicationIsNotAuthorizedToConnect));
    EXPECT_EQ(registerClass(), AnalyticsResult::ApplicationIsNotAuthorizedToConnect);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::GenericError);
    EXPECT_TRUE(service.commands().empty());
}

TEST_F(Answers, ComeInTurnAndThenAsBefore) {
    service.answer(Step::SendEvents, Answer::error(AnalyticsResult::QuotaExceeded));
    service.answerNext(Step::SendEvents, Answer::success());
    service.answerNext(Step::SendEvents, Answer::error(AnalyticsResult::MalformedJson));
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::MalformedJson);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::QuotaExceeded);
    service.answerNext(Step::SendEvents, Answer::error(AnalyticsResult::MalformedJson));
    service.acceptEverything();
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::Success);
}

TEST_F(Answers, RefuseConnectionsWithAnyStatus) {
    service.refuseConnections();
    EXPECT_EQ(registerClass(), AnalyticsResult::ServiceUnavailable);
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::GenericError);
    EXPECT_THROW(getDocuments(), hresult_error);
    service.refuseConnections(5);
    EXPECT_EQ(registerClass(), AnalyticsResult::AccessDenied);
    service.refuseConnections(1723);
    EXPECT_EQ(registerClass(), AnalyticsResult::GenericError);
    EXPECT_EQ(service.connections(), 5U);
    EXPECT_TRUE(service.commands().empty());
    EXPECT_THROW(service.refuseConnections(0), std::invalid_argument);
}

TEST_F(Answers, LoseTheConnectionAtAnyStep) {
    service.answer(Step::SendEvents, Answer::status(1726));
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::GenericError);
    service.answer(Step::Greet, Answer::status(1726));
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::GenericError);
}

TEST_F(Answers, AreTextsWordForWord) {
    service.answer(Step::GetConsent, Answer::text(ORVEL_TEXT("MyApp::CONSENT_RECORD::{}")));
    EXPECT_THROW(getConsent(), hresult_error);
    service.answer(Step::GetDocumentURLs,
                   Answer::text(ORVEL_TEXT(R"({"privacyurl":"p","warrantyurl":"w","telemetryurl":)"
                                           R"("t"})")));
    EXPECT_EQ(getDocuments(), AnalyticsResult::Success);
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT("w"));
}

TEST_F(Answers, AreNoRepliesBeforeThereIsAConnection) {
    EXPECT_THROW(service.answer(Step::Connect, Answer::error(AnalyticsResult::MalformedJson)),
                 std::invalid_argument);
    EXPECT_THROW(service.answerNext(Step::Connect, Answer::text({})), std::invalid_argument);
}

TEST_F(Answers, ReadANameThatHoldsTokensWhole) {
    AnalyticsSession odd(ORVEL_TEXT("a::SET_CONSENT::b"), ORVEL_TEXT("1"));
    EXPECT_EQ(odd.RegisterDataClass(&click), AnalyticsResult::Success);
    ASSERT_EQ(service.registrations().size(), 1U);
    EXPECT_EQ(service.registrations()[0].application, "a::SET_CONSENT::b");
}

TEST_F(Answers, KeepAConsentRecord) {
    ConsentObject kept;
    kept.tenant = ORVEL_TEXT("a \"tenant\"\n\\ \u6F22");
    kept.timestamp = ORVEL_TEXT("yesterday");
    kept.countryCode = ORVEL_TEXT("PT");
    kept.deviceSerialNumber = ORVEL_TEXT("SN-1");
    kept.consentSource = ORVEL_TEXT("setup");
    kept.processData = true;
    kept.processingPermissions.support = Permission::Rejected;
    service.setConsent(kept);
    EXPECT_EQ(getConsent(), AnalyticsResult::Success);
    EXPECT_EQ(consent.tenant, kept.tenant);
    EXPECT_EQ(consent.timestamp, kept.timestamp);
    EXPECT_EQ(consent.countryCode, kept.countryCode);
    EXPECT_EQ(consent.deviceSerialNumber, kept.deviceSerialNumber);
    EXPECT_EQ(consent.consentSource, kept.consentSource);
    EXPECT_TRUE(consent.processData);
    EXPECT_FALSE(consent.managed);
    EXPECT_EQ(consent.processingPermissions.support, Permission::Rejected);
    EXPECT_EQ(consent.processingPermissions.marketing, Permission::Unknown);
}

TEST_F(Answers, ChangeTheConsentRecordWhenTheApplicationDoes) {
    ProcessingPermissions wanted;
    wanted.marketing = Permission::Accepted;
    wanted.productEnhancement = Permission::Rejected;
    EXPECT_EQ(session.SetConsent(wanted), AnalyticsResult::Success);
    EXPECT_EQ(service.consent().processingPermissions.marketing, Permission::Accepted);
    EXPECT_EQ(service.consent().consentSource, ORVEL_TEXT("MyApp"));
    EXPECT_EQ(getConsent(), AnalyticsResult::Success);
    EXPECT_EQ(consent.processingPermissions.productEnhancement, Permission::Rejected);
}

TEST_F(Answers, KeepTheConsentRecordWhenTheChangeIsRefused) {
    ProcessingPermissions wanted;
    wanted.marketing = Permission::Accepted;
    service.answerNext(Step::SetConsent, Answer::error(AnalyticsResult::NotRightAccessToWrite));
    EXPECT_EQ(session.SetConsent(wanted), AnalyticsResult::NotRightAccessToWrite);
    ConsentObject managed = service.consent();
    managed.managed = true;
    service.setConsent(managed);
    EXPECT_EQ(session.SetConsent(wanted), AnalyticsResult::UnableToSetConsentForManagedDevice);
    EXPECT_EQ(service.consent().processingPermissions.marketing, Permission::Unknown);
}

TEST_F(Answers, RefuseEventsWhenNoDataMayBeProcessed) {
    ConsentObject none = service.consent();
    none.processData = false;
    service.setConsent(none);
    collect(R"({"count":1})");
    EXPECT_EQ(session.SendEvents(), AnalyticsResult::NotRightAccessToWrite);
    EXPECT_TRUE(service.events().empty());
}

TEST_F(Answers, HaveTheAddressesOfTheDocuments) {
    PrivacyDocuments addresses;
    addresses.privacyUrl = ORVEL_TEXT("https://example.com/privacy");
    addresses.telemetryUrl = ORVEL_TEXT("https://example.com/telemetry");
    service.setDocuments(addresses);
    EXPECT_EQ(getDocuments(), AnalyticsResult::Success);
    EXPECT_EQ(documents.privacyUrl, addresses.privacyUrl);
    EXPECT_EQ(documents.warrantyUrl, ORVEL_TEXT(""));
    EXPECT_EQ(documents.telemetryUrl, addresses.telemetryUrl);
    EXPECT_EQ(getConsent(), AnalyticsResult::Success);
    EXPECT_EQ(consent.privacyDocuments.privacyUrl, addresses.privacyUrl);
}

TEST(AServiceOf, SeveralIsTheOneMadeLastThatIsStillThere) {
    AnalyticsSession session(ORVEL_TEXT("MyApp"), ORVEL_TEXT("1"));
    auto first = std::make_unique<Service>();
    auto second = std::make_unique<Service>();
    auto third = std::make_unique<Service>();
    second.reset();
    session.SendEvents();
    EXPECT_EQ(third->batches().size(), 1U);
    third.reset();
    session.SendEvents();
    EXPECT_EQ(first->batches().size(), 1U);
    first.reset();
    EXPECT_THROW(session.SendEvents(), std::logic_error) << "there is none";
}

}  // namespace
}  // namespace Orvel::Analytics::Testing
