/// The C library's allocation, with which `operator new` allocates as well, replaced as its manual
/// describes ("Replacing malloc").

#include <errno.h>
#include <stdlib.h>

#include <cstddef>

#include "support/failing_memory.h"

namespace Memory = Orvel::TestSupport::Memory;

// The C library's own functions under their other names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

template <typename Allocate>
void* allocate(Allocate allocate) noexcept {
    if (Memory::allocationFails()) {
        errno = ENOMEM;
        return nullptr;
    }
    void* const block = allocate();
    if (block != nullptr) {
        Memory::allocated();
    }
    return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    return allocate([&] { return __libc_malloc(size); });
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return allocate([&] { return __libc_calloc(count, size); });
}

void* realloc(void* block, std::size_t size) noexcept {
    if (block == nullptr) {
        return malloc(size);
    }
    if (size == 0) {
        free(block);
        return nullptr;
    }
    if (Memory::allocationFails()) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(block, size);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return allocate([&] { return __libc_memalign(alignment, size); });
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    const int before = errno;
    *block = memalign(alignment, size);
    errno = before;
    return *block == nullptr ? ENOMEM : 0;
}

void free(void* block) noexcept {
    if (block != nullptr) {
        Memory::freed();
        __libc_free(block);
    }
}

}  // extern "C"
