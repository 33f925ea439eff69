#include "bench/library/watched_memory.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace Orvel::Bench::WatchedMemory {
namespace {

// The program has one thread.
std::size_t count = 0;
std::ptrdiff_t living = 0;
std::ptrdiff_t most = 0;

void* allocate(std::size_t size) noexcept {
    void* const block = std::malloc(size);
    if (block != nullptr) {
        ++count;
        living += static_cast<std::ptrdiff_t>(malloc_usable_size(block));
        most = std::max(most, living);
    }
    return block;
}

void release(void* block) noexcept {
    living -= static_cast<std::ptrdiff_t>(malloc_usable_size(block));
    std::free(block);
}

}  // namespace

void reset() {
    count = 0;
    living = 0;
    most = 0;
}

std::size_t allocations() { return count; }

std::size_t peak() { return static_cast<std::size_t>(most); }

}  // namespace Orvel::Bench::WatchedMemory

namespace Watched = Orvel::Bench::WatchedMemory;

void* operator new(std::size_t size) {
    if (void* const block = Watched::allocate(size)) {
        return block;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Watched::allocate(size);
}

void operator delete(void* block) noexcept { Watched::release(block); }

void operator delete(void* block, std::size_t /*size*/) noexcept { Watched::release(block); }
