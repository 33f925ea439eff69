#include "service/consent_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "service/store.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class ConsentListingTest : public testing::Test {
  protected:
    void SetUp() override {
        settings_.tenant = "a\u202Etenant";
        settings_.privacyAddresses.privacy = "https://x.y";
    }
    void setTwice() {
        store_.setConsent("My\x1B[31mApp", 1001, {.marketing = "Accepted"});
        store_.setConsent("Other", 1002, {.marketing = "Accepted", .support = "Rejected"});
    }
    std::string record(ListingForm form) {
        std::string text;
        StoreReader reader(file_);
        showConsent(reader, settings_, form, [&text](std::string_view piece) { text += piece; });
        return text;
    }
    std::string history(ListingForm form) {
        std::string text;
        StoreReader reader(file_);
        listConsentChanges(reader, form, [&text](std::string_view piece) { text += piece; });
        return text;
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    Store store_{file_, [] { return std::chrono::milliseconds{1'700'000'000'123}; }};
    Settings settings_;
};

TEST_F(ConsentListingTest, RecordInJsonIsTheOneThatApplicationsGet) {
    setTwice();
    const json shown = json::parse(record(ListingForm::kJson));
    EXPECT_EQ(shown, json::parse(consentRecordText(settings_, store_.consent())));
    EXPECT_EQ(shown.size(), 9U);
}

TEST_F(ConsentListingTest, RecordInTextHasALineForEverySetting) {
    EXPECT_THAT(record(ListingForm::kText), HasSubstr("last set              never\n"));
    setTwice();
    const std::string text = record(ListingForm::kText);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 13);
    EXPECT_THAT(text, HasSubstr("marketing             Accepted\n"));
    EXPECT_THAT(text, HasSubstr("support               Rejected\n"));
    EXPECT_THAT(text, HasSubstr("last set              2023-11-14T22:13:20.123Z\n"));
    EXPECT_THAT(text, HasSubstr("privacy statement     https://x.y\n"));
    EXPECT_THAT(text, HasSubstr("warranty              -\n"));
}

TEST_F(ConsentListingTest, HistoryInJsonHasOneObjectAChange) {
    EXPECT_EQ(history(ListingForm::kJson), "");
    setTwice();
    std::istringstream lines(history(ListingForm::kJson));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(json::parse(line), (json{{"timestamp", "2023-11-14T22:13:20.123Z"},
                                       {"application", "My\x1B[31mApp"},
                                       {"uid", 1001},
                                       {"consent_source", "application"},
                                       {"before",
                                        {{"marketing", "Unknown"},
                                         {"support", "Unknown"},
                                         {"product_enhancement", "Unknown"}}},
                                       {"after",
                                        {{"marketing", "Accepted"},
                                         {"support", "Unknown"},
                                         {"product_enhancement", "Unknown"}}}}));
    std::getline(lines, line);
    EXPECT_EQ(json::parse(line)["before"]["marketing"], "Accepted");
    EXPECT_EQ(json::parse(line)["after"]["support"], "Rejected");
    EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(ConsentListingTest, HistoryInTextShowsTheStepsUnderAHeading) {
    setTwice();
    const std::string text = history(ListingForm::kText);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    EXPECT_THAT(text, testing::StartsWith("TIME"));
    EXPECT_THAT(text, HasSubstr("Unknown -> Accepted"));
    EXPECT_THAT(text, HasSubstr("1002  Accepted              Unknown -> Rejected"));
}

TEST_F(ConsentListingTest, NothingThatIsStoredSteersATerminal) {
    setTwice();
    for (const ListingForm form : {ListingForm::kText, ListingForm::kJson}) {
        const std::string text = record(form) + history(form);
        EXPECT_THAT(text, Not(HasSubstr("\x1B")));
        EXPECT_THAT(text, Not(HasSubstr("\u202E")));
    }
}

}  // namespace
}  // namespace Orvel::Service
