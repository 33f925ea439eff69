#include "json/portable/arena.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace Orvel::Analytics::Json {
namespace {

constexpr std::size_t kAlignment = alignof(std::max_align_t);
constexpr std::size_t kLargest = std::numeric_limits<std::ptrdiff_t>::max() / 2;

constexpr std::size_t aligned(std::size_t size) {
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

}  // namespace

struct alignas(std::max_align_t) Arena::Chunk {
    Chunk* previous;
};

Arena::~Arena() {
    while (chunks_ != nullptr) {
        Chunk* const previous = chunks_->previous;
        ::operator delete(chunks_);
        chunks_ = previous;
    }
}

char* Arena::allocate(std::size_t size) {
    std::byte* const block = tryAllocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return reinterpret_cast<char*>(block);
}

void Arena::shrinkLast(std::size_t size) noexcept { next_ = last_ + aligned(size); }

yyjson_alc Arena::allocator() noexcept {
    return {
        [](void* arena, std::size_t size) -> void* {
            return static_cast<Arena*>(arena)->tryAllocate(size);
        },
        [](void* arena, void* block, std::size_t oldSize, std::size_t size) -> void* {
            return static_cast<Arena*>(arena)->tryResize(static_cast<std::byte*>(block), oldSize,
                                                         size);
        },
        [](void* arena, void* block) {
            static_cast<Arena*>(arena)->release(static_cast<std::byte*>(block));
        },
        this,
    };
}

std::byte* Arena::tryAllocate(std::size_t size) noexcept {
    if (size > kLargest ||
        (aligned(size) > static_cast<std::size_t>(end_ - next_) && !addChunk(aligned(size)))) {
        return nullptr;
    }
    last_ = next_;
    next_ += aligned(size);
    return last_;
}

std::byte* Arena::tryResize(std::byte* block, std::size_t oldSize, std::size_t size) noexcept {
    if (block == last_ && size <= kLargest &&
        aligned(size) <= static_cast<std::size_t>(end_ - block)) {
        next_ = block + aligned(size);
        return block;
    }
    std::byte* const moved = tryAllocate(size);
    if (moved != nullptr) {
        std::memcpy(moved, block, std::min(oldSize, size));
    }
    return moved;
}

void Arena::release(std::byte* block) noexcept {
    if (block != nullptr && block == last_) {
        next_ = last_;
        last_ = nullptr;
    }
}

bool Arena::addChunk(std::size_t size) noexcept {
    const std::size_t space = std::max(size, chunkSize_ * 2);
    void* const memory = ::operator new(sizeof(Chunk) + space, std::nothrow);
    if (memory == nullptr) {
        return false;
    }
    chunks_ = new (memory) Chunk{chunks_};
    chunkSize_ = std::min(space, kLargest / 4);
    next_ = static_cast<std::byte*>(memory) + sizeof(Chunk);
    end_ = next_ + space;
    return true;
}

}  // namespace Orvel::Analytics::Json
