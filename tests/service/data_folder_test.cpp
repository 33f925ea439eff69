#include "service/data_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using std::filesystem::perms;

perms modeOf(const std::filesystem::path& path) {
    return std::filesystem::status(path).permissions();
}

TEST(DataFolderTest, IsMadeForItsOwnerOnly) {
    const Support::TemporaryFolder folder;
    const auto path = folder.path() / "some/where";
    const DataFolder data(path);
    EXPECT_EQ(modeOf(path), perms::owner_all);
    EXPECT_EQ(modeOf(data.database()), perms::owner_read | perms::owner_write);
    EXPECT_EQ(data.database().parent_path(), path);
}

TEST(DataFolderTest, MayBeNamedWithASlashAtItsEnd) {
    const Support::TemporaryFolder folder;
    const DataFolder data(folder.path() / "data/");
    EXPECT_EQ(modeOf(folder.path() / "data"), perms::owner_all);
}

TEST(DataFolderTest, BelongsToOneServiceAtATime) {
    const Support::TemporaryFolder folder;
    {
        const DataFolder first(folder.path());
        try {
            const DataFolder second(folder.path());
            FAIL() << "two services use one data folder";
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("another service uses the data folder"));
        }
    }
    EXPECT_NO_THROW(DataFolder{folder.path()});
}

TEST(DataFolderTest, SaysWhatCannotBeMade) {
    const Support::TemporaryFolder folder;
    const DataFolder data(folder.path());
    try {
        const DataFolder below(data.database());
        FAIL() << "a file was taken for a folder";
    } catch (const std::exception& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(data.database().string()));
    }
}

TEST(DataFolderTest, AFileInItsPlaceIsNoFolderWhateverItsMode) {
    const Support::TemporaryFolder folder;
    const auto file = folder.path() / "events.jsonl";
    std::ofstream(file) << "{}";
    for (const perms mode : {perms::owner_read, perms::owner_read | perms::others_read}) {
        std::filesystem::permissions(file, mode);
        try {
            const DataFolder data(file);
            FAIL() << "a file was taken for a folder";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), file.string() + " is no folder");
        }
    }
}

TEST(DataFolderTest, ThatOthersMayLookIntoIsRefused) {
    const Support::TemporaryFolder folder;
    for (const perms mode : {perms::group_read, perms::others_write, perms::others_exec}) {
        std::filesystem::permissions(folder.path(), perms::owner_all | mode);
        try {
            const DataFolder data(folder.path());
            FAIL() << "others may look into it";
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("chmod 700 " + folder.path().string()));
        }
    }
}

TEST(DataFolderTest, OfAnotherUserIsRefused) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can make one";
    }
    const Support::TemporaryFolder folder;
    ASSERT_EQ(::chown(folder.path().c_str(), 1, 1), 0);
    EXPECT_THROW(DataFolder{folder.path()}, std::runtime_error);
}

TEST(DataFolderTest, ClosesADatabaseThatWasOpenToOthers) {
    const Support::TemporaryFolder folder;
    const auto file = databaseFile(folder.path());
    std::ofstream(file) << "";
    std::filesystem::permissions(file, perms(0644));
    const DataFolder data(folder.path());
    EXPECT_EQ(modeOf(file), perms::owner_read | perms::owner_write);
}

TEST(DataFolderTest, DatabaseThatALinkLeadsToIsRefused) {
    const Support::TemporaryFolder folder;
    const Support::TemporaryFolder elsewhere;
    std::filesystem::create_symlink(elsewhere.path() / "theirs", databaseFile(folder.path()));
    EXPECT_THROW(DataFolder{folder.path()}, std::system_error);
    EXPECT_FALSE(std::filesystem::exists(elsewhere.path() / "theirs"));
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(DataFolderTest, KeepsADatabaseWithItsLogUnderANameThatIsFree) {
    const Support::TemporaryFolder folder;
    DataFolder data(folder.path());
    const std::string name = data.database().string();
    std::ofstream(name + ".damaged-1") << "earlier";
    std::ofstream(name) << "database";
    std::ofstream(name + "-wal") << "log";
    std::ofstream(name + "-shm") << "index";
    EXPECT_EQ(data.keepDatabaseAside(), name + ".damaged-2");
    EXPECT_EQ(contentOf(name + ".damaged-1"), "earlier");
    EXPECT_EQ(contentOf(name + ".damaged-2"), "database");
    EXPECT_EQ(contentOf(name + ".damaged-2-wal"), "log");
    EXPECT_TRUE(std::filesystem::is_empty(name));
    EXPECT_EQ(modeOf(name), perms::owner_read | perms::owner_write);
    EXPECT_FALSE(std::filesystem::exists(name + "-wal"));
    EXPECT_FALSE(std::filesystem::exists(name + "-shm"));
}

TEST(DataFolderTest, OverwritesNothingWhenItKeepsADatabase) {
    const Support::TemporaryFolder folder;
    DataFolder data(folder.path());
    const std::string name = data.database().string();
    std::ofstream(name) << "database";
    std::ofstream(name + "-wal") << "log";
    std::ofstream(name + ".damaged-1-wal") << "somebody's";
    EXPECT_THROW(data.keepDatabaseAside(), std::runtime_error);
    EXPECT_EQ(contentOf(name), "database");
    EXPECT_EQ(contentOf(name + "-wal"), "log");
    EXPECT_EQ(contentOf(name + ".damaged-1-wal"), "somebody's");
}

}  // namespace
}  // namespace Orvel::Service
