#ifndef ORVEL_JSON_PORTABLE_ARENA_H
#define ORVEL_JSON_PORTABLE_ARENA_H

#include <yyjson.h>

#include <array>
#include <cstddef>

namespace Orvel::Analytics::Json {

/// The memory of one document: blocks are handed out one behind the other and given back together.
/// The block handed out last can grow in place and can be given back alone, which is what a
/// serialised text needs that is read at once.
class Arena {
  public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena();

    /// @return memory aligned for any type.
    /// @throws std::bad_alloc
    char* allocate(std::size_t size);

    /// Gives back the end of the block that was handed out last.
    void shrinkLast(std::size_t size) noexcept;

    /// The arena as an allocator of the JSON engine, which is told of exhausted memory by null.
    yyjson_alc allocator() noexcept;

  private:
    struct Chunk;
    static constexpr std::size_t kFirstSize = 5632;

    std::byte* tryAllocate(std::size_t size) noexcept;
    std::byte* tryResize(std::byte* block, std::size_t oldSize, std::size_t size) noexcept;
    void release(std::byte* block) noexcept;
    bool addChunk(std::size_t size) noexcept;

    alignas(std::max_align_t) std::array<std::byte, kFirstSize> first_;
    std::byte* last_ = nullptr;
    std::byte* next_ = first_.data();
    std::byte* end_ = first_.data() + kFirstSize;
    Chunk* chunks_ = nullptr;
    std::size_t chunkSize_ = kFirstSize;
};

}  // namespace Orvel::Analytics::Json

#endif
