#include "tests/support/AllocationWatch.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace stmdcm_test {

std::atomic<std::size_t> largestAllocation{0};

}  // namespace stmdcm_test

void* operator new(std::size_t size) {
    stmdcm_test::largestAllocation = std::max(stmdcm_test::largestAllocation.load(), size);
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
