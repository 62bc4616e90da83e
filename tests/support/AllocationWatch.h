#pragma once

#include <atomic>
#include <cstddef>

namespace stmdcm_test {

/// The largest single allocation by operator new; a test sets it to 0. Link AllocationWatch.cpp.
extern std::atomic<std::size_t> largestAllocation;

}  // namespace stmdcm_test
