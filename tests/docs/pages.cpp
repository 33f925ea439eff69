#include "docs/pages.h"

#include <cctype>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace Orvel::TestSupport {

namespace fs = std::filesystem;

namespace {

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// Calls `inProse` or `inBlock` for each line of a page, the latter with what the block's first
/// line says of it.
template <typename InProse, typename InBlock>
void readLines(const fs::path& page, InProse inProse, InBlock inBlock) {
    std::istringstream text(contentOf(page));
    std::string line;
    std::string info;
    bool inside = false;
    while (std::getline(text, line)) {
        if (const std::string content = trimmed(line); content.starts_with("```")) {
            inside = !inside;
            info = content.substr(3);
            if (inside) {
                inBlock(info, nullptr);
            }
        } else if (inside) {
            inBlock(info, &line);
        } else {
            inProse(line);
        }
    }
}

}  // namespace

fs::path sourceFolder() { return ORVEL_SOURCE_DIR; }

std::string contentOf(const fs::path& file) {
    std::ifstream in(sourceFolder() / file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<fs::path> pages() {
    std::vector<fs::path> found;
    const auto take = [&](const fs::directory_entry& entry) {
        if (entry.path().extension() == ".md") {
            found.push_back(fs::relative(entry.path(), sourceFolder()));
        }
    };
    for (const auto& entry : fs::directory_iterator(sourceFolder())) {
        take(entry);
    }
    for (const char* folder : {"docs", "packaging", "examples"}) {
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder() / folder)) {
            take(entry);
        }
    }
    return found;
}

std::vector<std::string> proseOf(const fs::path& page) {
    std::vector<std::string> prose;
    readLines(
        page, [&](const std::string& line) { prose.push_back(line); },
        [](const std::string&, const std::string*) {});
    return prose;
}

std::vector<std::vector<std::string>> blocksOf(const fs::path& page, const std::string& language) {
    std::vector<std::vector<std::string>> blocks;
    readLines(
        page, [](const std::string&) {},
        [&](const std::string& info, const std::string* line) {
            if (info.substr(0, info.find(' ')) != language) {
                return;
            }
            if (line == nullptr) {
                blocks.emplace_back();
            } else {
                blocks.back().push_back(*line);
            }
        });
    return blocks;
}

std::vector<std::string> linksOf(const fs::path& page) {
    static const std::regex kCode("`[^`]*`");
    static const std::regex kLink(R"(\]\(([^)\s]+)\))");
    std::string text;
    for (const std::string& line : proseOf(page)) {
        text += std::regex_replace(line, kCode, "") + '\n';
    }
    std::vector<std::string> links;
    for (std::sregex_iterator at(text.begin(), text.end(), kLink), end; at != end; ++at) {
        links.push_back((*at)[1].str());
    }
    return links;
}

std::set<std::string> anchorsOf(const fs::path& page) {
    std::set<std::string> anchors;
    for (const std::string& line : proseOf(page)) {
        if (!line.starts_with('#')) {
            continue;
        }
        std::string anchor;
        for (const char character : trimmed(line.substr(line.find_first_not_of('#')))) {
            const auto byte = static_cast<unsigned char>(character);
            if (character == ' ') {
                anchor += '-';
            } else if (std::isalnum(byte) != 0 || character == '-' || character == '_') {
                anchor += static_cast<char>(std::tolower(byte));
            }
        }
        anchors.insert(anchor);
    }
    return anchors;
}

std::vector<std::vector<std::string>> rowsOf(const fs::path& page) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : proseOf(page)) {
        if (!line.starts_with('|')) {
            continue;
        }
        std::istringstream cells(line.substr(1));
        std::vector<std::string> row;
        for (std::string cell; std::getline(cells, cell, '|');) {
            row.push_back(trimmed(cell));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace Orvel::TestSupport
