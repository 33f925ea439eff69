/// The page about results and errors lacks none, and has no other.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>

#include "docs/pages.h"

namespace Orvel::TestSupport {
namespace {

const char* const kPage = "docs/guide/results.md";

std::vector<std::string> matches(const std::string& text, const std::regex& pattern) {
    std::vector<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at) {
        found.push_back((*at)[1].str());
    }
    return found;
}

/// Name and number of every result code, as the public header declares them.
std::map<std::string, std::string> declaredResults() {
    const std::string header = contentOf("include/orvel/analytics/result.h");
    const std::regex value(R"(\n    ([A-Z]\w+) = (\d+),)");
    std::map<std::string, std::string> results;
    for (std::sregex_iterator at(header.begin(), header.end(), value), end; at != end; ++at) {
        results[(*at)[1].str()] = (*at)[2].str();
    }
    return results;
}

/// The same as the page's table has them; a code without words on when it comes is left out.
std::map<std::string, std::string> explainedResults() {
    std::map<std::string, std::string> results;
    for (const std::vector<std::string>& row : rowsOf(kPage)) {
        if (row.size() == 4 && std::regex_match(row[1], std::regex(R"(\d+)")) && !row[2].empty() &&
            (!row[3].empty() || row[1] == "0")) {
            results[row[0].substr(1, row[0].size() - 2)] = row[1];
        }
    }
    return results;
}

TEST(ResultsPage, ExplainsEveryResultCodeAndNoOther) {
    EXPECT_GT(declaredResults().size(), 20U);
    EXPECT_EQ(explainedResults(), declaredResults());
}

TEST(ResultsPage, ExplainsEveryErrorThatAPublicHeaderNames) {
    const std::string page = contentOf(kPage);
    std::set<std::string> raised;
    for (const auto& entry :
         std::filesystem::directory_iterator(sourceFolder() / "include/orvel/analytics")) {
        const std::string header = contentOf(entry.path());
        for (const std::string& name : matches(header, std::regex(R"(@throws ([\w:]+))"))) {
            raised.insert(name);
        }
    }
    for (const std::string& name : matches(contentOf("include/orvel/analytics/hresult_error.h"),
                                           std::regex(R"(HRESULT_ERROR\((hresult_\w+),)"))) {
        raised.insert(name);
    }
    EXPECT_GT(raised.size(), 15U);
    for (std::string name : raised) {
        if (name.starts_with("Orvel::Analytics::")) {
            name = name.substr(std::string("Orvel::Analytics::").size());
        }
        EXPECT_NE(page.find('`' + name + '`'), std::string::npos) << name;
    }
}

TEST(ResultsPage, QuotesTheTextsThatTheConstructorRaises) {
    const std::string page = contentOf(kPage);
    const auto texts =
        matches(contentOf("src/session/session.cpp"), std::regex(R"re(throw "([^"]+)")re"));
    EXPECT_EQ(texts.size(), 3U);
    for (const std::string& text : texts) {
        EXPECT_NE(page.find('"' + text + '"'), std::string::npos) << text;
    }
}

TEST(Pages, NumberAResultAsItIsNumbered) {
    const auto results = declaredResults();
    const std::regex numbered(R"(`([A-Z]\w+)` \((\d+)\))");
    int checked = 0;
    for (const auto& page : pages()) {
        const std::string text = contentOf(page);
        for (std::sregex_iterator at(text.begin(), text.end(), numbered), end; at != end; ++at) {
            const auto result = results.find((*at)[1].str());
            if (result != results.end()) {
                EXPECT_EQ(result->second, (*at)[2].str()) << page << ": " << (*at)[0].str();
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 20);
}

}  // namespace
}  // namespace Orvel::TestSupport
