#include "cli/result_names.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace Orvel::Tool {
namespace {

using Analytics::Emitters::AnalyticsResult;

/// Every enumerator that the public header declares.
std::map<std::string, std::int32_t> declaredResults() {
    std::ifstream header(ORVEL_RESULT_HEADER);
    const std::regex enumerator(R"(^ +([A-Z][A-Za-z]+) = ([0-9]+),$)");
    std::map<std::string, std::int32_t> results;
    std::smatch match;
    for (std::string line; std::getline(header, line);) {
        if (std::regex_match(line, match, enumerator)) {
            results[match[1]] = std::stoi(match[2]);
        }
    }
    return results;
}

TEST(ResultNamesTest, EveryResultHasItsNameAndWords) {
    const auto results = declaredResults();
    ASSERT_EQ(results.size(), 27U);
    for (const auto& [name, number] : results) {
        const auto result = static_cast<AnalyticsResult>(number);
        EXPECT_EQ(resultName(result), name);
        EXPECT_NE(resultWords(result), resultWords(static_cast<AnalyticsResult>(3))) << name;
    }
}

TEST(ResultNamesTest, ANumberThatNoOperationGivesIsUnknown) {
    EXPECT_EQ(describeResult(static_cast<AnalyticsResult>(21)),
              "Unknown (21): a result without a name");
}

TEST(ResultNamesTest, ADescriptionHasNameNumberAndWords) {
    EXPECT_EQ(describeResult(AnalyticsResult::EmptyEvent), "EmptyEvent (2): the event is empty");
}

}  // namespace
}  // namespace Orvel::Tool
