#ifndef ORVEL_FAULTS_FAULTY_DISK_H
#define ORVEL_FAULTS_FAULTY_DISK_H

#include <cstdint>
#include <filesystem>
#include <memory>

namespace Orvel::Faults {

/// The disk as SQLite sees it in this process, which fails when it is told to. It stands before the
/// system's own for as long as it lives; databases must be opened and closed in that time.
///
/// One at a time. Used by one thread, and not while SQLite works on another.
class FaultyDisk {
  public:
    /// Which of SQLite's operations fails, and how.
    enum class Failure {
        kNone,
        kFull,          ///< a write finds no space
        kFullDatabase,  ///< a write to a database's main file, not to its log, finds no space
        kHalfWrite,     ///< a write fails after half of its bytes
        kWrite,         ///< a write fails
        kSync,          ///< what was written cannot be made durable
        kReadOnly,      ///< files can be opened for reading only
    };

    FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;
    ~FaultyDisk();

    /// Lets every operation of that kind fail, after so many that do not.
    void fail(Failure failure, std::uint64_t after = 0);
    /// Nothing fails any more.
    void heal() { fail(Failure::kNone); }
    /// How many operations have failed since `fail`.
    std::uint64_t failures() const;

    /// Keeps a copy of every file as it was when it was last made durable.
    /// @param folder where the copies are, under the files' names.
    void keepDurableCopies(const std::filesystem::path& folder);

    class Impl;

  private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace Orvel::Faults

#endif
