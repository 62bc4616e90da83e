#pragma once

// What a test and the preloaded shim (FaultShim.cpp) say to each other.

#include <atomic>
#include <cstdint>

namespace stmdcm_test {

/// The environment of a program under the shim: "MODE N ERRNO WHEN" with MODE one of count, fail, kill, short, alloc
/// and WHEN one of once, onwards; and the file of one Report.
inline constexpr const char* kPlanVariable = "STMDCM_FAULT_PLAN";
inline constexpr const char* kReportVariable = "STMDCM_FAULT_REPORT";

/// What the shim has seen: shared memory, so that a killed program reports, too.
struct Report {
    std::atomic<std::uint64_t> calls;  ///< that the plan's error can meet
    std::atomic<std::uint64_t> hits;   ///< faults made
    char call[32];                     ///< the first call that was hit
    char path[480];                    ///< the file that it was made on
};

}  // namespace stmdcm_test
