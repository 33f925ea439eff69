/// Every form of `operator new` and `operator delete`.

#include <cstddef>
#include <cstdlib>
#include <new>

#include "support/failing_memory.h"

namespace Memory = Orvel::TestSupport::Memory;

namespace {

void* tryToAllocate(std::size_t size, std::size_t alignment) noexcept {
    if (Memory::allocationFails()) {
        return nullptr;
    }
    const std::size_t whole = size == 0 ? 1 : size;
    void* block = nullptr;
    if (alignment <= alignof(std::max_align_t)) {
        block = std::malloc(whole);
    } else {
        // What is asked for has to be a multiple of the alignment.
        block = std::aligned_alloc(alignment, (whole + alignment - 1) / alignment * alignment);
    }
    if (block != nullptr) {
        Memory::allocated();
    }
    return block;
}

void* allocate(std::size_t size, std::size_t alignment = 1) {
    void* const block = tryToAllocate(size, alignment);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr) {
        Memory::freed();
        std::free(block);
    }
}

std::size_t number(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

// The forms for arrays and those that throw nothing are told by the standard to call these, but a
// sanitizer has replaced them all.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, number(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocate(size, number(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return tryToAllocate(size, 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return tryToAllocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return tryToAllocate(size, number(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return tryToAllocate(size, number(alignment));
}

void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    release(block);
}
