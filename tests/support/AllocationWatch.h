#pragma once

#include <atomic>
#include <cstddef>
#include <new>

namespace stmdcm_test {

/// What operator new has given in all, freed or not; a test sets it to 0.
extern std::atomic<std::size_t> allocatedBytes;

/// The largest single allocation by operator new; a test sets it to 0. Link AllocationWatch.cpp.
extern std::atomic<std::size_t> largestAllocation;

/// How many allocations are granted before one fails.
extern std::atomic<std::size_t> allocationsUntilFailure;

/// Runs the work with its n-th allocation (counted from 0) failing. Returns whether `std::bad_alloc` came out of it.
template <class Work>
bool RunsOutOfMemory(std::size_t n, Work work) {
    const struct Failure {
        explicit Failure(std::size_t left) { allocationsUntilFailure = left; }
        ~Failure() { allocationsUntilFailure = ~std::size_t{0}; }
    } failure(n);
    try {
        work();
        return false;
    } catch (const std::bad_alloc&) {
        return true;
    }
}

}  // namespace stmdcm_test
