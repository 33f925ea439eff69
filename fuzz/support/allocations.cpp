#include "fuzz/support/allocations.h"

#include <atomic>
#include <cstdio>

#include "fuzz/support/require.h"

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define ORVEL_FUZZ_COUNTS 1
#endif
#endif
#ifdef __SANITIZE_ADDRESS__
#define ORVEL_FUZZ_COUNTS 1
#endif
#ifdef ORVEL_FUZZ_COUNTS
// Of the sanitizers' interface, whose header not every compiler brings along.
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*allocated)(const volatile void* block, std::size_t size),
    void (*released)(const volatile void* block));
#endif

namespace Orvel::Fuzz {
namespace {

std::atomic<std::size_t> allocated{0};

#ifdef ORVEL_FUZZ_COUNTS
[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t size) { allocated += size; }, [](const volatile void*) {});
#endif

}  // namespace

AllocationBound::AllocationBound(std::size_t fixed, std::size_t perByte, std::size_t inputSize)
    : most_(fixed + perByte * inputSize), before_(allocated) {}

AllocationBound::~AllocationBound() {
    const std::size_t taken = allocated - before_;
    if (taken > most_) {
        std::fprintf(stderr, "%zu bytes were allocated, %zu are in proportion\n", taken, most_);
    }
    require(taken <= most_, "memory is allocated in proportion to the input");
}

}  // namespace Orvel::Fuzz
