#ifndef ORVEL_FUZZ_ALLOCATIONS_H
#define ORVEL_FUZZ_ALLOCATIONS_H

#include <cstddef>

namespace Orvel::Fuzz {

/// Requires that what happens in a scope allocates in proportion to the input: no more than so many
/// bytes, and so many for each byte of the input, all allocations of the scope taken together.
/// Counted where AddressSanitizer sees every allocation, and nowhere else.
class AllocationBound {
  public:
    AllocationBound(std::size_t fixed, std::size_t perByte, std::size_t inputSize);
    AllocationBound(const AllocationBound&) = delete;
    AllocationBound& operator=(const AllocationBound&) = delete;
    ~AllocationBound();

  private:
    std::size_t most_;
    std::size_t before_;
};

}  // namespace Orvel::Fuzz

#endif
