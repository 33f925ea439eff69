#ifndef ORVEL_SERVICE_STORE_READER_H
#define ORVEL_SERVICE_STORE_READER_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "service/consent_table.h"
#include "service/sql.h"

namespace Orvel::Service {

/// Which events are asked for.
struct EventFilter {
    enum class Kind { kAll, kGood, kRefused };

    Kind kind = Kind::kAll;
    std::optional<std::string> className = std::nullopt;
    std::optional<std::string> application = std::nullopt;
    /// At most so many, the oldest first.
    std::optional<std::int64_t> limit = std::nullopt;
};

/// One event with the batch that it came in. The texts are borrowed.
struct EventRow {
    std::int64_t id = 0;
    std::int64_t received = 0;
    std::int64_t peerUser = 0;
    std::string_view application;
    std::string_view applicationVersion;
    std::string_view session;
    std::string_view sessionCounter;
    std::string_view sessionStarted;
    std::string_view versionTag;
    std::string_view user;
    std::string_view device;
    std::string_view environment;
    /// Nothing when a refused event names no single class.
    std::optional<std::string_view> className;
    std::optional<std::string_view> version;
    std::string_view time;
    /// Empty for a good event.
    std::string_view error;
    std::string_view path;
    std::string_view content;
};

/// One registration. The texts are borrowed.
struct ClassRow {
    std::string_view application;
    std::string_view id;
    std::string_view version;
    std::string_view name;
    std::string_view fields;
    std::int64_t firstRegistered = 0;
    std::int64_t lastRegistered = 0;
    /// Whether events of this identifier are judged by this registration.
    bool latest = false;
};

/// What was removed for one reason.
struct Removal {
    std::int64_t batches = 0;
    std::int64_t events = 0;
    /// When it last happened, in milliseconds since 1970; nothing when it never did.
    std::optional<std::int64_t> last = std::nullopt;
};

/// How many events of an application were stored on a day.
struct ApplicationCount {
    std::string application;
    std::int64_t events = 0;
};

/// How much is stored, and what was removed.
struct StoreStatus {
    std::int64_t bytes = 0;
    /// When the oldest batch was received, in milliseconds since 1970; nothing when there is none.
    std::optional<std::int64_t> oldest = std::nullopt;
    Removal forAge = {};
    Removal forRoom = {};
    /// Of the day that was asked for, the applications by their names.
    std::vector<ApplicationCount> today = {};
};

/// The statement that lists events of a kind; its parameters are class, application and limit.
std::string eventQuery(EventFilter::Kind kind);

/// Looks at the data, also while a service writes it. Every operation sees one moment of the data
/// and holds one row at a time. Used by one thread at a time.
class StoreReader {
  public:
    /// @throws SqlError when there is no database or it is not this version's.
    explicit StoreReader(const std::filesystem::path& file);

    /// Visits events, oldest first. @throws SqlError
    void forEachEvent(const EventFilter& filter, const std::function<void(const EventRow&)>& visit);
    /// How many events there are, whatever the filter's limit. @throws SqlError
    std::int64_t countEvents(const EventFilter& filter);
    /// Visits registrations by application and identifier, the oldest registration first.
    /// @throws SqlError
    void forEachClass(const std::function<void(const ClassRow&)>& visit);

    /// The consent as it was last set; nothing when it never was. @throws SqlError
    std::optional<GivenConsent> consent();
    /// Visits the changes of the consent, the oldest first. @throws SqlError
    void forEachConsentChange(const std::function<void(const ConsentChange&)>& visit);

    /// @param day as `utcDay` counts it. @throws SqlError
    StoreStatus status(std::int64_t day);

  private:
    Database database_;
};

}  // namespace Orvel::Service

#endif
