#ifndef ORVEL_SERVICE_STORE_H
#define ORVEL_SERVICE_STORE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/calendar.h"
#include "service/consent_record.h"
#include "service/data_class.h"
#include "service/error_name.h"
#include "service/settings.h"
#include "service/sql.h"

namespace Orvel::Service {

/// The identity under which a batch of events was sent.
struct Session {
    std::string versionTag;
    std::string started;
    std::string application;
    std::string applicationVersion;
    std::string id;
    /// The digits as they were written.
    std::string counter;
    std::string user;
    std::string device;
    std::string environment;
};

/// A data class as it is stored.
struct StoredClass {
    std::int64_t id = 0;
    std::vector<Field> fields;
};

/// One event as it was judged. The texts are borrowed.
struct JudgedEvent {
    /// What was wrong; empty for a good event.
    ErrorName error;
    /// Where a bad event's fault is, as a JSON path.
    std::string path;
    /// A good event's values, or the whole of a bad event, as received.
    std::string_view content;
    /// The class that a bad event names, if it names one.
    std::optional<std::string_view> className;
    /// A good event's class, version and time.
    std::int64_t dataClass = 0;
    std::optional<std::string_view> version;
    std::string_view time;
};

/// What becomes of a registration.
enum class Registered {
    kAccepted,
    /// The same identifier and version are registered with other fields; nothing is changed.
    kConflict,
};

/// The service's data, in one SQLite database. Whatever an operation has written is durable when it
/// returns, and an operation that throws has written nothing. What writes throws when the database
/// is no longer where it was opened.
///
/// What is stored stays within limits. Events that are too old, and the oldest ones for which there
/// is no room any more, go with the next batch, registration or change of the consent; that which
/// would have no room even then is refused.
///
/// Any thread. What writes blocks on the disk and waits for its turn; batches that wait at the same
/// time share a transaction, and those that can be stored are stored whatever becomes of the
/// others. What only reads waits for no writing.
class Store {
  public:
    /// Opens the database, or makes a new one. An old one is read whole.
    /// @param limits those of what is stored are kept.
    /// @throws SqlError when it cannot be opened or is not this version's; DamagedDatabase when it
    ///     is not sound. Its file is left as it is then.
    Store(const std::filesystem::path& file, Clock clock, const Limits& limits = {});
    ~Store();

    /// Makes a data class the latest one of its identifier.
    /// @throws SqlError; Refusal QuotaExceeded when there is no room for it.
    Registered registerClass(std::string_view application, const DataClass& dataClass);

    /// The latest registration of an identifier by an application. @throws SqlError
    std::optional<StoredClass> latestClass(std::string_view application,
                                           std::string_view identifier);

    /// Stores a batch with all its events, good and bad, or nothing of it.
    /// @param peerUser the user of this machine who sent the batch.
    /// @throws SqlError; Refusal QuotaExceeded when the application has no more so many events for
    ///     today, or there is no room for them.
    void addBatch(const Session& session, std::uint32_t peerUser,
                  const std::vector<JudgedEvent>& events);

    /// The consent as it was last set; nothing when it never was. @throws SqlError
    std::optional<GivenConsent> consent();

    /// Sets the consent. What it was before is kept.
    /// @param peerUser the user of this machine who runs the application.
    /// @throws SqlError; Refusal QuotaExceeded when there is no room for it.
    void setConsent(std::string_view application, std::uint32_t peerUser,
                    const Permissions& permissions);

    /// Removes events that are too old or too many, at most so many batches of them at a time.
    /// @return whether there may be more to remove. @throws SqlError
    bool removeSome(std::int64_t mostBatches = 1000);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Orvel::Service

#endif
