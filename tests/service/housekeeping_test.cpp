#include "service/housekeeping.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "service/store_reader.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

class HousekeepingTest : public testing::Test {
  protected:
    void storeOldEvents(int batches) {
        JudgedEvent event;
        event.error = ErrorNames::kMalformedJson;
        event.content = "5";
        Session session{};
        session.application = "App";
        session.counter = "0";
        for (int batch = 0; batch < batches; ++batch) {
            store_.addBatch(session, 0, {event});
        }
        now_ += std::chrono::days{2};
    }
    std::int64_t stored() { return StoreReader(file_).countEvents({}); }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    std::chrono::milliseconds now_{1'700'000'000'000};
    Store store_{file_, [this] { return now_; }, {.storedDays = 1}};
    std::string logged_;
    Log log_{[this](std::string_view line) { logged_ += line; }, [this] { return now_; }};
};

TEST_F(HousekeepingTest, RemovesWhatIsTooOldAsSoonAsItBegins) {
    storeOldEvents(3);
    EXPECT_EQ(stored(), 3);
    { const Housekeeping housekeeping(store_, log_); }
    EXPECT_EQ(stored(), 0);
    EXPECT_EQ(logged_, "");
}

TEST_F(HousekeepingTest, SaysWhyItCannotRemoveAnything) {
    storeOldEvents(1);
    Database(file_, Database::Access::kReadWrite)
        .execute("CREATE TRIGGER stuck BEFORE DELETE ON batch BEGIN SELECT RAISE(FAIL, 'no'); END");
    { const Housekeeping housekeeping(store_, log_); }
    EXPECT_EQ(stored(), 1);
    EXPECT_THAT(logged_, testing::HasSubstr(R"("event":"removal_failed")"));
}

}  // namespace
}  // namespace Orvel::Service
