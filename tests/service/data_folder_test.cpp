#include "service/data_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

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
        EXPECT_THAT(error.what(), testing::HasSubstr("analytics.db"));
    }
}

}  // namespace
}  // namespace Orvel::Service
