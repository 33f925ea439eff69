#ifndef ORVEL_TESTS_DOCS_PAGES_H
#define ORVEL_TESTS_DOCS_PAGES_H

#include <filesystem>
#include <set>
#include <string>
#include <vector>

/// The project's Markdown pages, as far as their tests must understand them.
namespace Orvel::TestSupport {

/// The folder of the project's source.
std::filesystem::path sourceFolder();

/// A file of the project, named from its folder.
std::string contentOf(const std::filesystem::path& file);

/// Every Markdown page, named from the project's folder.
std::vector<std::filesystem::path> pages();

/// The lines of a page that stand in no fenced block.
std::vector<std::string> proseOf(const std::filesystem::path& page);

/// The fenced blocks of a language in a page, each as its lines.
std::vector<std::vector<std::string>> blocksOf(const std::filesystem::path& page,
                                               const std::string& language);

/// The targets of a page's links: paths, anchors and addresses, as they are written.
std::vector<std::string> linksOf(const std::filesystem::path& page);

/// The anchors of a page's headings, by GitHub's rule.
std::set<std::string> anchorsOf(const std::filesystem::path& page);

/// The cells of the rows of every table in a page, without the blanks around them.
std::vector<std::vector<std::string>> rowsOf(const std::filesystem::path& page);

}  // namespace Orvel::TestSupport

#endif
