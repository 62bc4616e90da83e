#include "tests/support/AllocationWatch.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace stmdcm_test {

std::atomic<std::size_t> allocatedBytes{0};
std::atomic<std::size_t> largestAllocation{0};
std::atomic<std::size_t> allocationsUntilFailure{~std::size_t{0}};

}  // namespace stmdcm_test

void* operator new(std::size_t size) {
    stmdcm_test::allocatedBytes += size;
    stmdcm_test::largestAllocation = std::max(stmdcm_test::largestAllocation.load(), size);
    const bool isGranted = stmdcm_test::allocationsUntilFailure-- != 0;
    if (void* memory = isGranted ? std::malloc(size) : nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
