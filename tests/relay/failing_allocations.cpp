#include "tests/relay/failing_allocations.h"

#include <cstdlib>
#include <new>

int Orvel::Relay::Testing::allocationsLeft = -1;

void* operator new(std::size_t size) {
    int& left = Orvel::Relay::Testing::allocationsLeft;
    if (left >= 0 && left-- == 0) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
