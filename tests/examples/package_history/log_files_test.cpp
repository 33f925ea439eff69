#include "examples/package_history/log_files.h"

#include <gmock/gmock.h>
#include <zlib.h>

#include <fstream>
#include <stdexcept>

#include "support/temporary_folder.h"

namespace PackageHistory {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class LogFilesTest : public testing::Test {
  protected:
    fs::path path(const std::string& name) const { return folder.path() / name; }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

    void writeCompressed(const std::string& name, const std::string& content) const {
        gzFile file = gzopen(path(name).c_str(), "wb");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(gzwrite(file, content.data(), static_cast<unsigned>(content.size())),
                  static_cast<int>(content.size()));
        gzclose(file);
    }

    std::vector<std::string> names(const std::string& log) const {
        std::vector<std::string> found;
        for (const fs::path& file : findLogFiles(path(log))) {
            found.push_back(file.filename().string());
        }
        return found;
    }

    std::vector<std::string> lines(const std::string& name) const {
        std::vector<std::string> found;
        forEachLine(path(name), [&](const std::string& line) { found.push_back(line); });
        return found;
    }

    Orvel::Support::TemporaryFolder folder;
};

TEST_F(LogFilesTest, TheOldestFileComesFirst) {
    for (const char* name :
         {"dpkg.log", "dpkg.log.1", "dpkg.log.2.gz", "dpkg.log.9.gz", "dpkg.log.10.gz"}) {
        write(name, "");
    }
    EXPECT_THAT(names("dpkg.log"), ElementsAre("dpkg.log.10.gz", "dpkg.log.9.gz", "dpkg.log.2.gz",
                                               "dpkg.log.1", "dpkg.log"));
}

TEST_F(LogFilesTest, OtherFilesBesideTheLogAreLeftAlone) {
    for (const char* name : {"dpkg.log", "dpkg.log.bak", "dpkg.log.1.old", "dpkg.log1",
                             "alternatives.log", "alternatives.log.1", "dpkg.log.1.gz.tmp"}) {
        write(name, "");
    }
    EXPECT_THAT(names("dpkg.log"), ElementsAre("dpkg.log"));
}

TEST_F(LogFilesTest, TheCurrentFileMayBeMissing) {
    write("dpkg.log.1", "");
    EXPECT_THAT(names("dpkg.log"), ElementsAre("dpkg.log.1"));
    EXPECT_THAT(names("other.log"), IsEmpty());
    EXPECT_THAT(findLogFiles(path("none") / "dpkg.log"), IsEmpty());
}

TEST_F(LogFilesTest, OfAFileThatIsBeingCompressedThePlainFormIsRead) {
    write("dpkg.log.2", "");
    write("dpkg.log.2.gz", "");
    EXPECT_THAT(names("dpkg.log"), ElementsAre("dpkg.log.2"));
}

TEST_F(LogFilesTest, PlainAndCompressedFilesReadTheSame) {
    write("plain", "one\n\nthree");
    writeCompressed("compressed.gz", "one\n\nthree");
    EXPECT_THAT(lines("plain"), ElementsAre("one", "", "three"));
    EXPECT_THAT(lines("compressed.gz"), ElementsAre("one", "", "three"));
}

TEST_F(LogFilesTest, LinesLongerThanABufferAreKeptWhole) {
    const std::string longLine(200'000, 'x');
    writeCompressed("long.gz", "a\n" + longLine + "\nb\n");
    EXPECT_THAT(lines("long.gz"), ElementsAre("a", longLine, "b"));
}

TEST_F(LogFilesTest, AnEmptyFileHasNoLines) {
    write("empty", "");
    EXPECT_THAT(lines("empty"), IsEmpty());
}

TEST_F(LogFilesTest, ACompressedFileThatIsCutOffIsAnError) {
    std::string content;
    for (int i = 0; i < 10'000; ++i) {
        content += std::to_string(i * i) + "\n";
    }
    writeCompressed("whole.gz", content);
    fs::resize_file(path("whole.gz"), fs::file_size(path("whole.gz")) / 2);
    EXPECT_THROW(lines("whole.gz"), std::runtime_error);
}

TEST_F(LogFilesTest, AFileThatCannotBeReadIsAnErrorThatNamesIt) {
    for (const fs::path& file : {path("none"), folder.path()}) {
        try {
            forEachLine(file, [](const std::string&) {});
            ADD_FAILURE() << file;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(file.string()));
        }
    }
}

}  // namespace
}  // namespace PackageHistory
