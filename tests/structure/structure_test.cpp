/// Who may know whom: reads what every source file includes and holds it against the plan of the
/// rooms in docs/structure.md.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const fs::path kRoot = ORVEL_SOURCE_DIR;

/// What the files of a room may include beside their own room, the standard library and the
/// operating system.
struct Room {
    Names rooms;
    Names libraries;
};

const std::map<std::string, Room> kRooms = {
    {"include", {{}, {}}},
    {"src/text", {{"include"}, {}}},
    {"src/json", {{"include", "src/text"}, {"yyjson.h"}}},
    {"src/dataclass", {{"include", "src/json", "src/text"}, {}}},
    {"src/events", {{"include", "src/json", "src/text"}, {}}},
    {"src/consent", {{"include", "src/json", "src/text"}, {}}},
    {"src/channel", {{"include", "src/json", "src/text", "relay client interface"}, {}}},
    {"src/session",
     {{"include", "src/dataclass", "src/events", "src/consent", "src/channel", "src/json",
       "src/text"},
      {}}},
    {"relay client interface", {{}, {}}},
    {"relay server interface", {{"relay client interface"}, {}}},
    {"relay/wire", {{"relay client interface"}, {}}},
    {"relay/client", {{"relay client interface", "relay/wire"}, {}}},
    {"relay/server",
     {{"relay client interface", "relay server interface", "relay/wire"}, {"asio", "asio.hpp"}}},
    {"service",
     {{"relay client interface", "relay server interface"},
      {"yyjson.h", "sqlite3.h", "CLI", "fmt", "toml++"}}},
    {"cli", {{"include", "relay client interface"}, {"CLI", "fmt", "nlohmann"}}},
    {"testing interface", {{"include"}, {"gmock"}}},
    {"testing", {{"include", "relay client interface", "testing interface"}, {"nlohmann"}}},
    {"examples",
     {{"include", "relay client interface", "testing interface"},
      {"zlib.h", "nlohmann", "gtest", "gmock"}}},
};

/// Every library that some room may know; what is not here is the standard library or the system.
const Names kLibraries = {"yyjson.h", "sqlite3.h", "CLI",   "fmt",      "toml++",
                          "nlohmann", "zlib.h",    "asio",  "asio.hpp", "gtest",
                          "gmock",    "benchmark", "boost", "simdutf.h"};

struct Include {
    std::string target;
    bool angled;
};

std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<Include> includesOf(const std::string& content) {
    static const std::regex kInclude(R"((^|\n)[ \t]*#[ \t]*include[ \t]*([<"])([^>"\n]+)[>"])");
    std::vector<Include> includes;
    for (std::sregex_iterator at(content.begin(), content.end(), kInclude), end; at != end; ++at) {
        includes.push_back({(*at)[3].str(), (*at)[2].str() == "<"});
    }
    return includes;
}

std::vector<fs::path> sourceFiles() {
    std::vector<fs::path> files;
    for (const char* folder :
         {"include", "src", "relay", "service", "cli", "testing", "examples"}) {
        for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
            const fs::path extension = entry.path().extension();
            if (extension == ".h" || extension == ".cpp") {
                files.push_back(fs::relative(entry.path(), kRoot));
            }
        }
    }
    return files;
}

std::string firstPart(const std::string& path) { return path.substr(0, path.find('/')); }

bool isPublic(const std::string& room) {
    return room == "include" || room == "relay client interface" || room == "testing interface";
}

std::string relayInterface(const std::string& header) {
    return header == "server.h" ? "relay server interface" : "relay client interface";
}

/// Whether a file is built for Windows alone.
bool isForWindows(const fs::path& file) {
    return file.stem().string().ends_with("_windows") || file.parent_path().filename() == "windows";
}

/// The room that a file, named from the root, stands in.
std::string roomOf(const fs::path& file) {
    std::string first = file.begin()->string();
    if (file.parent_path() == "relay/include/orvel/relay") {
        return relayInterface(file.filename().string());
    }
    if (first == "testing" && *std::next(file.begin()) == "include") {
        return "testing interface";
    }
    if (first == "src" || first == "relay") {
        return first + "/" + std::next(file.begin())->string();
    }
    return first;
}

/// The room that an include of the project's own leads to.
std::string roomOfInclude(const std::string& target, const std::string& includingRoom) {
    if (target.starts_with("orvel/relay/")) {
        return relayInterface(target.substr(std::string("orvel/relay/").size()));
    }
    if (target.starts_with("orvel/analytics/testing")) {
        return "testing interface";
    }
    if (target.starts_with("orvel/analytics")) {
        return "include";
    }
    if (target.starts_with("relay/")) {
        return roomOf(target);
    }
    if (kRooms.contains("src/" + firstPart(target))) {
        return "src/" + firstPart(target);
    }
    if (kRooms.contains(firstPart(target))) {
        return firstPart(target);
    }
    return includingRoom;  // Named from the including file's own folder.
}

TEST(Structure, HasFilesToRead) { EXPECT_GT(sourceFiles().size(), 50U); }

TEST(Structure, EveryFileStandsInAKnownRoom) {
    for (const fs::path& file : sourceFiles()) {
        EXPECT_TRUE(kRooms.contains(roomOf(file))) << file;
    }
}

TEST(Structure, RoomsKnowOnlyTheRoomsThatTheyMay) {
    for (const fs::path& file : sourceFiles()) {
        const std::string room = roomOf(file);
        for (const Include& include : includesOf(contentOf(kRoot / file))) {
            const bool isOwn = !include.angled || include.target.starts_with("orvel/");
            const std::string other =
                isOwn ? roomOfInclude(include.target, room) : std::string(room);
            EXPECT_TRUE(other == room || kRooms.at(room).rooms.contains(other))
                << file << " includes " << include.target;
        }
    }
}

TEST(Structure, RoomsKnowOnlyTheLibrariesThatTheyMay) {
    for (const fs::path& file : sourceFiles()) {
        const std::string room = roomOf(file);
        for (const Include& include : includesOf(contentOf(kRoot / file))) {
            const std::string library = firstPart(include.target);
            EXPECT_TRUE(!kLibraries.contains(library) ||
                        kRooms.at(room).libraries.contains(library))
                << file << " includes " << include.target;
        }
    }
}

TEST(Structure, PublicHeadersNeedTheStandardLibraryOnly) {
    for (const fs::path& file : sourceFiles()) {
        if (!isPublic(roomOf(file))) {
            continue;
        }
        // What only GoogleTest makes possible stands in a header of its own.
        const bool isForGoogleTest = file.filename() == "matchers.h";
        for (const Include& include : includesOf(contentOf(kRoot / file))) {
            const bool isStandard =
                include.angled && include.target.find_first_of("./") == std::string::npos;
            EXPECT_TRUE(isStandard || include.target.starts_with("orvel/") ||
                        (isForGoogleTest && include.target == "gmock/gmock.h"))
                << file << " includes " << include.target;
        }
    }
}

TEST(Structure, OnlyTextAndExportHeadersAskForThePlatform) {
    const std::regex platform(R"(\b_WIN32\b)");
    for (const fs::path& file : sourceFiles()) {
        const std::string name = file.filename().string();
        if (isPublic(roomOf(file)) && (name == "text.h" || name == "export.h")) {
            continue;
        }
        EXPECT_FALSE(std::regex_search(contentOf(kRoot / file), platform)) << file;
    }
}

TEST(Structure, OnlyFilesOfWindowsIncludeItsHeaders) {
    const Names headers = {"windows.h", "io.h", "shellapi.h", "hstring.h", "inspectable.h"};
    for (const fs::path& file : sourceFiles()) {
        for (const Include& include : includesOf(contentOf(kRoot / file))) {
            EXPECT_TRUE(isForWindows(file) || !headers.contains(include.target))
                << file << " includes " << include.target;
        }
    }
}

TEST(Structure, FilesStaySmall) {
    for (const fs::path& file : sourceFiles()) {
        const std::string content = contentOf(kRoot / file);
        EXPECT_LE(std::count(content.begin(), content.end(), '\n'), 400) << file;
    }
}

}  // namespace
