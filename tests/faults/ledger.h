#ifndef ORVEL_FAULTS_LEDGER_H
#define ORVEL_FAULTS_LEDGER_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace Orvel::Faults {

/// What a client was told of a batch that it sent.
enum class Told {
    kNothing,       ///< the connection ended before there was an answer
    kAcknowledged,  ///< the events are stored
    kRefused,       ///< nothing of it is stored
};

/// A batch: events with numbers that no other event has.
struct SentBatch {
    std::int32_t first = 0;
    std::int32_t count = 0;
    Told told = Told::kNothing;
};

/// What became of everything that was sent, in events.
struct Account {
    std::uint64_t sent = 0;
    std::uint64_t acknowledged = 0;
    std::uint64_t refused = 0;
    std::uint64_t found = 0;
    /// Acknowledged and not there.
    std::uint64_t lost = 0;
    /// There more than once.
    std::uint64_t duplicated = 0;
    /// There although refused.
    std::uint64_t revived = 0;
    /// Of batches that are there in part.
    std::uint64_t torn = 0;
    /// There and never sent.
    std::uint64_t strange = 0;
    /// There and acknowledged to nobody, because the answer was lost.
    std::uint64_t unanswered = 0;

    Account& operator+=(const Account& other);
    /// Whether every promise was kept.
    bool isKept() const;
    /// Such as `sent 10, acknowledged 9, …`.
    std::string text() const;
};

/// What clients have sent and were told, held against what is stored. Any thread records.
class Ledger {
  public:
    /// Numbers for the events of a batch that is about to be sent, from the returned one on.
    std::int32_t takeNumbers(std::int32_t count);
    void record(const SentBatch& batch);

    /// The account of all that was recorded, with the numbers of the events that are stored, in any
    /// order.
    Account account(const std::vector<std::int32_t>& stored) const;

    /// How many events were acknowledged so far.
    std::uint64_t acknowledged() const;

  private:
    mutable std::mutex mutex_;
    std::int32_t next_ = 0;
    std::uint64_t acknowledged_ = 0;
    std::vector<SentBatch> batches_;
};

/// The numbers of all events in a service's database, read without the service's own code.
/// @throws std::runtime_error when it cannot be read.
std::vector<std::int32_t> storedNumbers(const std::filesystem::path& database);

/// What SQLite's integrity check says: "ok", or what is wrong.
std::string integrityOf(const std::filesystem::path& database);

}  // namespace Orvel::Faults

#endif
