#include "service/schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "service/store.h"
#include "service/store_reader.h"
#include "support/temporary_folder.h"

namespace Orvel::Service {
namespace {

using testing::ElementsAre;

/// The first version's tables with a row or two in each, as that version left them.
constexpr const char* kFirstVersion = R"sql(
    PRAGMA journal_mode = WAL;
    CREATE TABLE application(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE) STRICT;
    CREATE TABLE data_class(
        id INTEGER PRIMARY KEY, application_id INTEGER NOT NULL REFERENCES application(id),
        identifier TEXT NOT NULL, version TEXT NOT NULL, name TEXT NOT NULL, fields TEXT NOT NULL,
        first_registered INTEGER NOT NULL, last_registered INTEGER NOT NULL,
        registration INTEGER NOT NULL, UNIQUE(application_id, identifier, version)) STRICT;
    CREATE UNIQUE INDEX data_class_latest ON data_class(application_id, identifier, registration);
    CREATE TABLE batch(
        id INTEGER PRIMARY KEY, application_id INTEGER NOT NULL REFERENCES application(id),
        received INTEGER NOT NULL, peer_user INTEGER NOT NULL, version_tag TEXT NOT NULL,
        session_started TEXT NOT NULL, application_version TEXT NOT NULL, session TEXT NOT NULL,
        session_counter TEXT NOT NULL, user TEXT NOT NULL, device TEXT NOT NULL,
        environment TEXT NOT NULL) STRICT;
    CREATE TABLE event(
        id INTEGER PRIMARY KEY, batch_id INTEGER NOT NULL REFERENCES batch(id),
        data_class_id INTEGER NOT NULL REFERENCES data_class(id), version TEXT, time TEXT NOT NULL,
        content TEXT NOT NULL) STRICT;
    CREATE TABLE refused_event(
        id INTEGER PRIMARY KEY, batch_id INTEGER NOT NULL REFERENCES batch(id), class TEXT,
        error TEXT NOT NULL, path TEXT NOT NULL, content TEXT NOT NULL) STRICT;
    INSERT INTO application VALUES(1, 'App'), (2, 'Other');
    INSERT INTO data_class VALUES(7, 1, 'Evt', '1', 'An event', '[]', 10, 20, 5000);
    INSERT INTO batch VALUES(6000, 1, 30, 1001, 't', 's', '2', 'S', '0', 'u', 'd', 'Production');
    INSERT INTO event VALUES(6001, 6000, 7, '1', '20240131T235959', '{"a":1}');
    INSERT INTO refused_event VALUES(9000000000000000000, 6000, NULL, 'MalformedJson', '$', '5');
    PRAGMA application_id = 0x4F72766C;
    PRAGMA user_version = 1;)sql";

class SchemaTest : public testing::Test {
  protected:
    void SetUp() override { Database(file_, Database::Access::kReadWrite).execute(kFirstVersion); }

    std::unique_ptr<Store> open() {
        return std::make_unique<Store>(file_, [] { return std::chrono::milliseconds{40}; });
    }

    /// Every row of the first version's tables, its values as SQL writes them.
    std::map<std::string, std::vector<std::string>> rows() {
        const std::map<std::string, std::string> columns = {
            {"application", "id, name"},
            {"data_class",
             "id, application_id, identifier, version, name, fields, first_registered, "
             "last_registered, registration"},
            {"batch",
             "id, application_id, received, peer_user, version_tag, session_started, "
             "application_version, session, session_counter, user, device, environment"},
            {"event", "id, batch_id, data_class_id, version, time, content"},
            {"refused_event", "id, batch_id, class, error, path, content"}};
        Database database(file_, Database::Access::kReadOnly);
        std::map<std::string, std::vector<std::string>> all;
        for (const auto& [table, names] : columns) {
            Statement rows(database,
                           "SELECT json_array(" + names + ") FROM " + table + " ORDER BY id");
            while (rows.step()) {
                all[table].emplace_back(rows.text(0));
            }
        }
        return all;
    }

    std::int64_t version() {
        Database database(file_, Database::Access::kReadOnly);
        Statement version(database, "PRAGMA user_version");
        version.step();
        return version.integer(0);
    }

    Support::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "analytics.db";
    const Permissions accepted_{
        .marketing = "Accepted", .support = "Accepted", .productEnhancement = "Accepted"};
};

TEST_F(SchemaTest, DataOfTheFirstVersionIsKeptAndGetsAConsent) {
    const auto before = rows();
    ASSERT_EQ(before.size(), 5U);
    const auto store = open();
    EXPECT_EQ(version(), 3);
    EXPECT_EQ(rows(), before);
    EXPECT_EQ(store->consent(), std::nullopt);
    store->setConsent("App", 1001, accepted_);
    EXPECT_EQ(store->consent()->permissions, accepted_);
    EXPECT_TRUE(store->latestClass("App", "Evt"));
    EXPECT_EQ(rows(), before);
}

TEST_F(SchemaTest, IdentifiersGoOnFromThoseOfTheFirstVersion) {
    open()->setConsent("App", 1001, accepted_);
    Database database(file_, Database::Access::kReadOnly);
    Statement change(database, "SELECT id FROM consent_change");
    ASSERT_TRUE(change.step());
    EXPECT_GT(change.integer(0), 9'000'000'000'000'000'000);
}

TEST_F(SchemaTest, IdentifiersGoOnFromTheLastConsent) {
    open()->setConsent("App", 1001, accepted_);
    open()->setConsent("App", 1001, {});
    EXPECT_EQ(open()->consent()->permissions, Permissions{});
}

TEST_F(SchemaTest, DataOfTheFirstVersionCanBeLookedAtAsItIs) {
    StoreReader reader(file_);
    std::vector<std::string> contents;
    reader.forEachEvent({},
                        [&contents](const EventRow& row) { contents.emplace_back(row.content); });
    EXPECT_THAT(contents, ElementsAre(R"({"a":1})", "5"));
    EXPECT_EQ(reader.consent(), std::nullopt);
    reader.forEachConsentChange([](const ConsentChange&) { FAIL() << "a change that never was"; });
    EXPECT_EQ(version(), 1);
    const StoreStatus status = reader.status(0);
    EXPECT_EQ(status.oldest, 30);
    EXPECT_EQ(status.forAge.events, 0);
    EXPECT_TRUE(status.today.empty());
    open()->setConsent("App", 1001, accepted_);
    EXPECT_EQ(reader.consent()->permissions, accepted_) << "after a service has renewed the data";
}

TEST_F(SchemaTest, RenewalThatFailsLeavesTheDataAsItWas) {
    Database(file_, Database::Access::kReadWrite).execute("CREATE TABLE consent_change(x)");
    const auto before = rows();
    EXPECT_THROW(open(), SqlError);
    EXPECT_EQ(version(), 1);
    EXPECT_EQ(rows(), before);
}

TEST_F(SchemaTest, DataWithoutAVersionIsRefused) {
    for (const char* version : {"0", "-1"}) {
        Database(file_, Database::Access::kReadWrite)
            .execute(std::string("PRAGMA user_version = ") + version);
        EXPECT_THROW(open(), SqlError);
        EXPECT_THROW(StoreReader{file_}, SqlError);
    }
}

TEST_F(SchemaTest, ConsentHoldsNothingButTheThreeAnswers) {
    const auto store = open();
    EXPECT_THROW(store->setConsent("App", 1001, {.marketing = "accepted"}), SqlError);
    EXPECT_EQ(store->consent(), std::nullopt);
}

}  // namespace
}  // namespace Orvel::Service
