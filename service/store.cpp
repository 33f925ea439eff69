#include "service/store.h"

#include <exception>
#include <iterator>
#include <mutex>
#include <span>

#include "service/batch_table.h"
#include "service/consent_table.h"
#include "service/daily_count.h"
#include "service/database_files.h"
#include "service/gathering.h"
#include "service/retention.h"
#include "service/schema.h"
#include "service/time_ordered_ids.h"

namespace Orvel::Service {

namespace {

Database openDatabase(const std::filesystem::path& file) {
    Database database(file, Database::Access::kReadWrite);
    // A reader may hold a lock for a moment.
    database.execute("PRAGMA busy_timeout = 5000");
    // References hold by the way in which rows are written. Were they enforced, removing a batch
    // would search all events for one that belongs to it.
    database.execute("PRAGMA foreign_keys = OFF");
    // What is refused stays as it was found.
    database.tidyUpOnClose(false);
    prepareSchema(database);
    database.tidyUpOnClose(true);
    database.execute("PRAGMA journal_mode = WAL");
    database.execute("PRAGMA synchronous = FULL");
    return database;
}

Database openReader(const std::filesystem::path& file) {
    Database database(file, Database::Access::kReadOnly);
    database.execute("PRAGMA busy_timeout = 5000");
    return database;
}

std::int64_t lastId(const Database& database) {
    Statement statement(database, R"sql(
        SELECT max((SELECT coalesce(max(id), 0) FROM batch),
                   (SELECT coalesce(max(id), 0) FROM event),
                   (SELECT coalesce(max(id), 0) FROM refused_event),
                   (SELECT coalesce(max(id), 0) FROM consent_change),
                   (SELECT coalesce(max(last_id), 0) FROM removal),
                   (SELECT coalesce(max(registration), 0) FROM data_class)))sql");
    statement.step();
    return statement.integer(0);
}

}  // namespace

class Store::Impl {
  public:
    Impl(const std::filesystem::path& file, Clock clock, const Limits& limits)
        : clock_(std::move(clock)),
          mostEventsOfADay_(limits.eventsPerDay),
          database_(openDatabase(file)),
          retention_(database_, limits),
          reader_(openReader(file)),
          ids_(lastId(database_)),
          files_(file) {}

    Registered registerClass(std::string_view application, const DataClass& dataClass);
    std::optional<StoredClass> latestClass(std::string_view application,
                                           std::string_view identifier);
    void addBatch(const Session& session, std::uint32_t peerUser,
                  const std::vector<JudgedEvent>& events);
    std::optional<GivenConsent> consent();
    void setConsent(std::string_view application, std::uint32_t peerUser,
                    const Permissions& permissions);
    bool removeSome(std::int64_t mostBatches);

  private:
    /// A batch that somebody waits for to be stored.
    struct IncomingBatch {
        const Session& session;
        std::uint32_t peerUser;
        const std::vector<JudgedEvent>& events;
        /// Why it was not stored, if it was not.
        std::exception_ptr failure;
    };

    std::int64_t applicationId(std::string_view name);
    void makeRoom(std::chrono::milliseconds now, std::int64_t last);
    void storeBatches(const std::vector<IncomingBatch*>& batches);
    bool storeTogether(const std::vector<IncomingBatch*>& batches);
    void storeAlone(IncomingBatch& batch);
    void store(std::span<IncomingBatch* const> batches);
    void insert(IncomingBatch& batch, std::chrono::milliseconds now);
    bool hasQuota(const IncomingBatch& batch, std::chrono::milliseconds now);
    void commit(Transaction& transaction);

    Clock clock_;
    std::int64_t mostEventsOfADay_;
    /// Held by who uses the connection that writes, and what belongs to it.
    std::mutex writing_;
    Database database_;
    Retention retention_;
    /// Held by who uses the connection that reads, which waits for no transaction.
    std::mutex reading_;
    Database reader_;
    TimeOrderedIds ids_;
    DatabaseFiles files_;
    /// A commit waits for the disk, however much it commits.
    Gathering<IncomingBatch> incoming_{
        [this](const std::vector<IncomingBatch*>& batches) { storeBatches(batches); }};

    Statement findApplication_{database_, "SELECT id FROM application WHERE name = ?1"};
    Statement addApplication_{database_,
                              "INSERT INTO application(name) VALUES(?1) ON CONFLICT DO NOTHING"};
    Statement findFields_{database_, R"sql(
        SELECT fields FROM data_class
        WHERE application_id = ?1 AND identifier = ?2 AND version = ?3)sql"};
    Statement addClass_{database_, R"sql(
        INSERT INTO data_class(application_id, identifier, version, name, fields,
                               first_registered, last_registered, registration)
        VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?6, ?7)
        ON CONFLICT(application_id, identifier, version) DO UPDATE SET
            name = excluded.name, last_registered = excluded.last_registered,
            registration = excluded.registration)sql"};
    Statement findLatest_{reader_, R"sql(
        SELECT data_class.id, fields
        FROM data_class JOIN application ON application.id = application_id
        WHERE application.name = ?1 AND identifier = ?2
        ORDER BY registration DESC LIMIT 1)sql"};
    BatchTable batches_{database_};
    DailyCount counts_{database_};
    Statement addConsent_{database_,
                          "INSERT INTO consent_change VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"};
};

// What is written to files that have gone from their place nobody would find again.
void Store::Impl::commit(Transaction& transaction) {
    if (!files_.areInPlace()) {
        throw SqlError("the database has gone from its place, " + files_.database().string());
    }
    transaction.commit();
}

std::int64_t Store::Impl::applicationId(std::string_view name) {
    addApplication_.bind(1, name).run();
    const StatementUse use(findApplication_);
    findApplication_.bind(1, name).step();
    return findApplication_.integer(0);
}

/// Removes what may go for what the transaction has added. What was there after the identifier
/// `last` stays.
void Store::Impl::makeRoom(std::chrono::milliseconds now, std::int64_t last) {
    retention_.remove(now, last);
    if (!retention_.hasRoom()) {
        throw Refusal(ErrorNames::kQuotaExceeded);
    }
}

Registered Store::Impl::registerClass(std::string_view application, const DataClass& dataClass) {
    const std::string fields = fieldsText(dataClass.fields);
    const std::scoped_lock lock(writing_);
    const std::chrono::milliseconds now = clock_();
    Transaction transaction(database_);
    const std::int64_t owner = applicationId(application);
    {
        const StatementUse use(findFields_);
        findFields_.bind(1, owner).bind(2, dataClass.id).bind(3, dataClass.version);
        if (findFields_.step() && findFields_.text(0) != fields) {
            return Registered::kConflict;
        }
    }
    addClass_.bind(1, owner)
        .bind(2, dataClass.id)
        .bind(3, dataClass.version)
        .bind(4, dataClass.name)
        .bind(5, fields)
        .bind(6, now.count())
        .bind(7, ids_.next(now))
        .run();
    makeRoom(now, ids_.last());
    commit(transaction);
    return Registered::kAccepted;
}

std::optional<StoredClass> Store::Impl::latestClass(std::string_view application,
                                                    std::string_view identifier) {
    const std::scoped_lock lock(reading_);
    const StatementUse use(findLatest_);
    if (!findLatest_.bind(1, application).bind(2, identifier).step()) {
        return std::nullopt;
    }
    return StoredClass{findLatest_.integer(0), readFieldsText(findLatest_.text(1))};
}

void Store::Impl::addBatch(const Session& session, std::uint32_t peerUser,
                           const std::vector<JudgedEvent>& events) {
    IncomingBatch batch{session, peerUser, events, nullptr};
    incoming_.run(batch);
    if (batch.failure) {
        std::rethrow_exception(batch.failure);
    }
}

void Store::Impl::storeBatches(const std::vector<IncomingBatch*>& batches) {
    const std::scoped_lock lock(writing_);
    if (batches.size() > 1 && storeTogether(batches)) {
        return;
    }
    // One that cannot be stored must not keep the others from it.
    for (IncomingBatch* batch : batches) {
        storeAlone(*batch);
    }
}

bool Store::Impl::storeTogether(const std::vector<IncomingBatch*>& batches) {
    try {
        store(batches);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void Store::Impl::storeAlone(IncomingBatch& batch) {
    try {
        IncomingBatch* const alone = &batch;
        store({&alone, 1});
    } catch (...) {
        batch.failure = std::current_exception();
    }
}

void Store::Impl::store(std::span<IncomingBatch* const> batches) {
    Transaction transaction(database_);
    const std::int64_t last = ids_.last();
    std::chrono::milliseconds now{};
    for (IncomingBatch* batch : batches) {
        now = clock_();
        insert(*batch, now);
    }
    makeRoom(now, last);
    commit(transaction);
}

/// A batch that its application may not send any more today leaves no trace in the transaction.
void Store::Impl::insert(IncomingBatch& batch, std::chrono::milliseconds now) {
    batch.failure = nullptr;
    if (!hasQuota(batch, now)) {
        batch.failure = std::make_exception_ptr(Refusal(ErrorNames::kQuotaExceeded));
        return;
    }
    const Receipt receipt{now, batch.peerUser, applicationId(batch.session.application)};
    batches_.add(receipt, batch.session, batch.events, ids_);
    counts_.add(receipt.application, utcDay(now), std::ssize(batch.events));
}

bool Store::Impl::hasQuota(const IncomingBatch& batch, std::chrono::milliseconds now) {
    return mostEventsOfADay_ == 0 ||
           counts_.of(batch.session.application, utcDay(now)) + std::ssize(batch.events) <=
               mostEventsOfADay_;
}

std::optional<GivenConsent> Store::Impl::consent() {
    const std::scoped_lock lock(reading_);
    return lastConsent(reader_);
}

void Store::Impl::setConsent(std::string_view application, std::uint32_t peerUser,
                             const Permissions& permissions) {
    const std::scoped_lock lock(writing_);
    const std::chrono::milliseconds now = clock_();
    Transaction transaction(database_);
    addConsent_.bind(1, ids_.next(now))
        .bind(2, applicationId(application))
        .bind(3, now.count())
        .bind(4, peerUser)
        .bind(5, kApplicationSource)
        .bind(6, permissions.marketing)
        .bind(7, permissions.support)
        .bind(8, permissions.productEnhancement)
        .run();
    makeRoom(now, ids_.last());
    commit(transaction);
}

bool Store::Impl::removeSome(std::int64_t mostBatches) {
    const std::scoped_lock lock(writing_);
    Transaction transaction(database_);
    const bool all = retention_.remove(clock_(), ids_.last(), mostBatches);
    transaction.commit();
    return !all;
}

Store::Store(const std::filesystem::path& file, Clock clock, const Limits& limits)
    : impl_(std::make_unique<Impl>(file, std::move(clock), limits)) {}

Store::~Store() = default;

Registered Store::registerClass(std::string_view application, const DataClass& dataClass) {
    return impl_->registerClass(application, dataClass);
}

std::optional<StoredClass> Store::latestClass(std::string_view application,
                                              std::string_view identifier) {
    return impl_->latestClass(application, identifier);
}

void Store::addBatch(const Session& session, std::uint32_t peerUser,
                     const std::vector<JudgedEvent>& events) {
    impl_->addBatch(session, peerUser, events);
}

std::optional<GivenConsent> Store::consent() { return impl_->consent(); }

void Store::setConsent(std::string_view application, std::uint32_t peerUser,
                       const Permissions& permissions) {
    impl_->setConsent(application, peerUser, permissions);
}

bool Store::removeSome(std::int64_t mostBatches) { return impl_->removeSome(mostBatches); }

}  // namespace Orvel::Service
