/// The links of the Markdown pages.

#include "docs/pages.h"

#include <gtest/gtest.h>

namespace Orvel::TestSupport {
namespace {

namespace fs = std::filesystem;

bool isAddress(const std::string& link) {
    return link.starts_with("https://") || link.starts_with("http://");
}

/// A link of a page: the file that it leads to, from the project's folder, and the place in it.
struct Target {
    fs::path file;
    std::string anchor;
};

Target targetOf(const fs::path& page, const std::string& link) {
    const std::size_t mark = link.find('#');
    const std::string file = link.substr(0, mark);
    return {file.empty() ? page : (page.parent_path() / file).lexically_normal(),
            mark == std::string::npos ? std::string() : link.substr(mark + 1)};
}

TEST(Pages, AreThere) {
    EXPECT_GT(pages().size(), 15U);
    EXPECT_FALSE(linksOf("README.md").empty());
    EXPECT_TRUE(anchorsOf("docs/service.md").contains("limits"));
}

TEST(Pages, LinkOnlyToWhatIsThere) {
    for (const fs::path& page : pages()) {
        for (const std::string& link : linksOf(page)) {
            if (isAddress(link)) {
                continue;
            }
            const Target target = targetOf(page, link);
            ASSERT_TRUE(fs::exists(sourceFolder() / target.file)) << page << ": " << link;
            EXPECT_TRUE(target.anchor.empty() || anchorsOf(target.file).contains(target.anchor))
                << page << ": " << link;
        }
    }
}

TEST(Pages, AreFoundFromTheReadme) {
    std::set<fs::path> found = {"README.md"};
    for (std::vector<fs::path> open = {"README.md"}; !open.empty();) {
        const fs::path page = open.back();
        open.pop_back();
        for (const std::string& link : linksOf(page)) {
            const fs::path file = targetOf(page, link).file;
            if (!isAddress(link) && file.extension() == ".md" && found.insert(file).second) {
                open.push_back(file);
            }
        }
    }
    for (const fs::path& page : pages()) {
        if (page.begin()->string() == "docs" && page.filename() != "main.md") {
            EXPECT_TRUE(found.contains(page)) << page << " has no link to it";
        }
    }
}

}  // namespace
}  // namespace Orvel::TestSupport
