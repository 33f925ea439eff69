#include "examples/package_history/log_files.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string_view>

namespace PackageHistory {

namespace fs = std::filesystem;

namespace {

/// The number that log rotation gave to a file: 3 for `dpkg.log.3.gz`.
std::optional<unsigned> rotationOf(const fs::path& file, const std::string& log) {
    static const std::regex kRotated(R"(\.([0-9]{1,6})(\.gz)?)");
    const std::string name = file.filename().string();
    std::smatch match;
    if (!name.starts_with(log)) {
        return std::nullopt;
    }
    const std::string suffix = name.substr(log.size());
    if (!std::regex_match(suffix, match, kRotated)) {
        return std::nullopt;
    }
    return static_cast<unsigned>(std::stoul(match[1].str()));
}

[[noreturn]] void fail(const fs::path& file, const std::string& reason) {
    throw std::runtime_error(file.string() + ": " + reason);
}

struct Closer {
    void operator()(gzFile_s* file) const { gzclose(file); }
};

}  // namespace

std::vector<fs::path> findLogFiles(const fs::path& log) {
    std::map<unsigned, fs::path, std::greater<>> rotated;
    const fs::path folder = log.has_parent_path() ? log.parent_path() : fs::path(".");
    std::error_code ignored;  // Without the folder there are no files.
    for (const auto& item : fs::directory_iterator(folder, ignored)) {
        const auto number = rotationOf(item.path(), log.filename().string());
        if (!number) {
            continue;
        }
        // While a file is being compressed, both forms of it exist, and only the plain one is
        // whole.
        const auto [place, isNew] = rotated.emplace(*number, item.path());
        if (!isNew && place->second.extension() == ".gz") {
            place->second = item.path();
        }
    }
    std::vector<fs::path> files;
    files.reserve(rotated.size() + 1);
    for (const auto& [number, file] : rotated) {
        files.push_back(file);
    }
    if (fs::exists(log, ignored)) {
        files.push_back(log);
    }
    return files;
}

void forEachLine(const fs::path& file, const std::function<void(const std::string& line)>& take) {
    // zlib hands on a plain file as it is.
    const std::unique_ptr<gzFile_s, Closer> in(gzopen(file.c_str(), "rbe"));
    if (in == nullptr) {
        fail(file, "cannot be opened");
    }
    std::array<char, 65'536> buffer{};
    std::string line;
    int count = 0;
    while ((count = gzread(in.get(), buffer.data(), static_cast<unsigned>(buffer.size()))) > 0) {
        std::string_view piece(buffer.data(), static_cast<std::size_t>(count));
        for (std::size_t end = 0; (end = piece.find('\n')) != std::string_view::npos;) {
            line += piece.substr(0, end);
            take(line);
            line.clear();
            piece.remove_prefix(end + 1);
        }
        line += piece;
    }
    if (!line.empty()) {
        take(line);
    }
    int status = Z_OK;
    const char* const reason = gzerror(in.get(), &status);
    if (status != Z_OK) {
        fail(file, status == Z_ERRNO ? "reading failed" : reason);
    }
}

}  // namespace PackageHistory
