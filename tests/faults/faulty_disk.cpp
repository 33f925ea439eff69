#include "faults/faulty_disk.h"

#include <sqlite3.h>

#include <stdexcept>

namespace Orvel::Faults {

namespace {

using Failure = FaultyDisk::Failure;

/// What an open file of this disk is to SQLite; the system's own file lies behind it in memory.
struct File {
    sqlite3_file base;
    const char* name;
    bool isLog;

    sqlite3_file* own() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

}  // namespace

class FaultyDisk::Impl {
  public:
    Impl();
    ~Impl() { sqlite3_vfs_unregister(&vfs_); }

    bool failsNow(Failure failure);
    int open(const char* name, File& file, int flags, int* outFlags);
    int write(File& file, const void* bytes, int count, sqlite3_int64 at);
    int sync(File& file, int flags);
    int remove(const char* name, int syncsFolder);

    sqlite3_vfs* system;
    Failure failure = Failure::kNone;
    std::uint64_t after = 0;
    std::uint64_t failures = 0;
    std::filesystem::path copies;

  private:
    sqlite3_vfs vfs_;
};

namespace {

FaultyDisk::Impl* disk = nullptr;

File& fileOf(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }

/// The operation of the system's own file.
template <auto kOperation, typename... Arguments>
auto forward(sqlite3_file* file, Arguments... arguments) {
    sqlite3_file* own = fileOf(file).own();
    return (own->pMethods->*kOperation)(own, arguments...);
}

using M = sqlite3_io_methods;

int closeFile(sqlite3_file* file) { return forward<&M::xClose>(file); }
int readFile(sqlite3_file* file, void* to, int count, sqlite3_int64 at) {
    return forward<&M::xRead>(file, to, count, at);
}
int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    return disk->write(fileOf(file), bytes, count, at);
}
int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    return forward<&M::xTruncate>(file, size);
}
int syncFile(sqlite3_file* file, int flags) { return disk->sync(fileOf(file), flags); }
int sizeOfFile(sqlite3_file* file, sqlite3_int64* size) {
    return forward<&M::xFileSize>(file, size);
}
int lockFile(sqlite3_file* file, int level) { return forward<&M::xLock>(file, level); }
int unlockFile(sqlite3_file* file, int level) { return forward<&M::xUnlock>(file, level); }
int isReserved(sqlite3_file* file, int* result) {
    return forward<&M::xCheckReservedLock>(file, result);
}
int controlFile(sqlite3_file* file, int operation, void* argument) {
    return forward<&M::xFileControl>(file, operation, argument);
}
int sectorSize(sqlite3_file* file) { return forward<&M::xSectorSize>(file); }
int characteristics(sqlite3_file* file) { return forward<&M::xDeviceCharacteristics>(file); }
int mapShared(sqlite3_file* file, int region, int size, int extends, void volatile** memory) {
    return forward<&M::xShmMap>(file, region, size, extends, memory);
}
int lockShared(sqlite3_file* file, int offset, int count, int flags) {
    return forward<&M::xShmLock>(file, offset, count, flags);
}
void fenceShared(sqlite3_file* file) { forward<&M::xShmBarrier>(file); }
int unmapShared(sqlite3_file* file, int removes) { return forward<&M::xShmUnmap>(file, removes); }

// Version 2: files are not mapped into memory, so that every write comes by.
constexpr sqlite3_io_methods kMethods = {
    2,          closeFile,   readFile,    writeFile,   truncateFile, syncFile,        sizeOfFile,
    lockFile,   unlockFile,  isReserved,  controlFile, sectorSize,   characteristics, mapShared,
    lockShared, fenceShared, unmapShared, nullptr,     nullptr};

int openFile(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    return disk->open(name, fileOf(file), flags, outFlags);
}

int removeFile(sqlite3_vfs*, const char* name, int syncsFolder) {
    return disk->remove(name, syncsFolder);
}

}  // namespace

FaultyDisk::Impl::Impl() : system(sqlite3_vfs_find(nullptr)), vfs_(*system) {
    vfs_.zName = "faulty";
    vfs_.szOsFile = static_cast<int>(sizeof(File)) + system->szOsFile;
    vfs_.pNext = nullptr;
    vfs_.xOpen = openFile;
    vfs_.xDelete = removeFile;
    if (sqlite3_vfs_register(&vfs_, 1) != SQLITE_OK) {
        throw std::runtime_error("SQLite does not take another disk");
    }
}

bool FaultyDisk::Impl::failsNow(Failure kind) {
    if (failure != kind) {
        return false;
    }
    if (after > 0) {
        --after;
        return false;
    }
    ++failures;
    return true;
}

int FaultyDisk::Impl::open(const char* name, File& file, int flags, int* outFlags) {
    file.base.pMethods = nullptr;
    file.name = name;
    file.isLog = (flags & SQLITE_OPEN_WAL) != 0;
    const bool writes = (flags & SQLITE_OPEN_READWRITE) != 0;
    if (writes && failsNow(Failure::kReadOnly)) {
        flags &= ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        flags |= SQLITE_OPEN_READONLY;
    }
    const int code = system->xOpen(system, name, file.own(), flags, outFlags);
    if (file.own()->pMethods != nullptr) {
        file.base.pMethods = &kMethods;
    }
    return code;
}

int FaultyDisk::Impl::write(File& file, const void* bytes, int count, sqlite3_int64 at) {
    if (failsNow(Failure::kFull) || (!file.isLog && failsNow(Failure::kFullDatabase))) {
        return SQLITE_FULL;
    }
    if (failsNow(Failure::kWrite)) {
        return SQLITE_IOERR_WRITE;
    }
    if (failsNow(Failure::kHalfWrite)) {
        forward<&M::xWrite>(&file.base, bytes, count / 2, at);
        return SQLITE_IOERR_WRITE;
    }
    return forward<&M::xWrite>(&file.base, bytes, count, at);
}

int FaultyDisk::Impl::sync(File& file, int flags) {
    if (failsNow(Failure::kSync)) {
        return SQLITE_IOERR_FSYNC;
    }
    const int code = forward<&M::xSync>(&file.base, flags);
    if (code == SQLITE_OK && !copies.empty() && file.name != nullptr) {
        const std::filesystem::path path = file.name;
        std::filesystem::copy_file(path, copies / path.filename(),
                                   std::filesystem::copy_options::overwrite_existing);
    }
    return code;
}

int FaultyDisk::Impl::remove(const char* name, int syncsFolder) {
    if (!copies.empty()) {
        std::filesystem::remove(copies / std::filesystem::path(name).filename());
    }
    return system->xDelete(system, name, syncsFolder);
}

FaultyDisk::FaultyDisk() : impl_(std::make_unique<Impl>()) { disk = impl_.get(); }

FaultyDisk::~FaultyDisk() { disk = nullptr; }

void FaultyDisk::fail(Failure failure, std::uint64_t after) {
    impl_->failure = failure;
    impl_->after = after;
    impl_->failures = 0;
}

std::uint64_t FaultyDisk::failures() const { return impl_->failures; }

void FaultyDisk::keepDurableCopies(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    impl_->copies = folder;
}

}  // namespace Orvel::Faults
