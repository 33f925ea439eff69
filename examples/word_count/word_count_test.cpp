#include "word_count.h"

#include <gmock/gmock.h>
#include <orvel/analytics/testing.h>
#include <orvel/analytics/testing/matchers.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace WordCount {
namespace {

using namespace Orvel::Analytics::Testing;
using testing::AllOf;
using testing::ElementsAre;

class WordCountTest : public testing::Test {
  protected:
    WordCountTest() {
        std::ofstream(file) << "three words\n  here ";
        ConsentObject consent = service.consent();
        consent.processingPermissions.productEnhancement =
            ProcessingPermissions::ProcessingPermissionValue::Accepted;
        service.setConsent(consent);
    }
    ~WordCountTest() override { std::filesystem::remove(file); }

    int count(const std::vector<std::string>& files) { return run(files, out, errors); }

    Service service;
    const std::string file =
        testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
    std::ostringstream out;
    std::ostringstream errors;
};

TEST_F(WordCountTest, CountsAndReports) {
    EXPECT_EQ(count({file}), 0);
    EXPECT_EQ(out.str(), "3 " + file + "\n");
    EXPECT_EQ(errors.str(), "");
    EXPECT_THAT(service.events(),
                ElementsAre(AllOf(HasValue("kind", ".txt"), HasValue("words", 3))));
}

TEST_F(WordCountTest, CountsWithoutAServiceToo) {
    service.answer(Step::RegisterDataClass, Answer::status(1726));
    EXPECT_EQ(count({file}), 0);
    EXPECT_EQ(out.str(), "3 " + file + "\n");
    EXPECT_EQ(errors.str(), "The usage report was not delivered.\n");
}

TEST_F(WordCountTest, TellsOfAFileThatCannotBeRead) {
    EXPECT_EQ(count({file + ".missing", file}), 1);
    EXPECT_EQ(out.str(), "3 " + file + "\n");
    EXPECT_EQ(errors.str(), file + ".missing: cannot be read\n");
}

}  // namespace
}  // namespace WordCount
