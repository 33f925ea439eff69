#include "usage_report.h"

#include <gmock/gmock.h>
#include <orvel/analytics/testing.h>
#include <orvel/analytics/testing/matchers.h>

#include <chrono>

namespace WordCount {
namespace {

using namespace Orvel::Analytics::Testing;
using namespace std::chrono_literals;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Permission = ProcessingPermissions::ProcessingPermissionValue;
using testing::AllOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class UsageReportTest : public testing::Test {
  protected:
    UsageReportTest() { permit(Permission::Accepted); }

    void permit(Permission permission) {
        ConsentObject consent = service.consent();
        consent.processingPermissions.productEnhancement = permission;
        service.setConsent(consent);
    }

    Service service;
    UsageReport report;
};

TEST_F(UsageReportTest, HasEveryFileThatWasAdded) {
    report.add(".txt", 3);
    report.add(".md", 0);
    EXPECT_EQ(report.send(), Delivery::Delivered);
    EXPECT_THAT(service.events(),
                ElementsAre(AllOf(OfDataClass("counted_file"), HasVersion("1.0"),
                                  HasValues(R"({"kind":".txt","words":3})")),
                            AllOf(HasValue("kind", ".md"), HasValue("words", 0))));
}

TEST_F(UsageReportTest, TellsNothingOfAnUnusualExtension) {
    report.add(".my \"secret\"", 1);
    report.add(".averyveryverylongextension", 1);
    report.send();
    EXPECT_THAT(service.events(),
                ElementsAre(HasValue("kind", "other"), HasValue("kind", "other")));
}

TEST_F(UsageReportTest, RegistersItsDataClassBeforeItSends) {
    report.send();
    ASSERT_THAT(service.registrations(), SizeIs(1));
    EXPECT_THAT(service.registrations()[0].fields,
                ElementsAre(RegisteredField{"kind", "kind", "false", "varchar(16)"},
                            RegisteredField{"words", "words", "false", "integer"}));
}

TEST_F(UsageReportTest, IsNotSentUnlessTheUserPermitsIt) {
    report.add(".txt", 1);
    for (const Permission permission : {Permission::Rejected, Permission::Unknown}) {
        permit(permission);
        EXPECT_EQ(report.send(), Delivery::NotPermitted);
    }
    EXPECT_THAT(service.batches(), IsEmpty());
    EXPECT_THAT(service.registrations(), IsEmpty());
}

TEST_F(UsageReportTest, IsNotSentWhenTheServiceDoesNotTellTheConsent) {
    service.answer(Step::GetConsent, Answer::error(AnalyticsResult::ApplicationNotSigned));
    EXPECT_EQ(report.send(), Delivery::NotPermitted);
    service.refuseConnections();
    EXPECT_EQ(report.send(), Delivery::NotPermitted);
}

TEST_F(UsageReportTest, IsLostWhenTheServiceRefusesItAndIsNotSentAgain) {
    report.add(".txt", 1);
    service.answerNext(Step::SendEvents, Answer::error(AnalyticsResult::QuotaExceeded));
    EXPECT_EQ(report.send(), Delivery::Lost);
    report.add(".md", 2);
    EXPECT_EQ(report.send(), Delivery::Delivered);
    EXPECT_THAT(service.events(), ElementsAre(HasValue("kind", ".md")));
}

TEST_F(UsageReportTest, IsLostWhenTheServiceSaysWhatCannotBeRead) {
    service.answer(Step::RegisterDataClass, Answer::text(ORVEL_TEXT("ErrorCode")));
    EXPECT_EQ(report.send(), Delivery::Lost);
}

TEST_F(UsageReportTest, KeepsTheUserWaitingForOneAnswerAtTheMost) {
    for (const Step step : {Step::Connect, Step::GetConsent, Step::SendEvents}) {
        const auto before = service.waited();
        service.answerNext(step, Answer::silence());
        EXPECT_NE(report.send(), Delivery::Delivered);
        EXPECT_LE(service.waited() - before, 10s);
    }
}

}  // namespace
}  // namespace WordCount
