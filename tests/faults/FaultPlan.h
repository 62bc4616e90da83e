#pragma once

// What a test and the preloaded shim (FaultShim.cpp) say to each other.

#include <atomic>
#include <cstdint>

namespace stmdcm_test {

/// The environment of a program under the shim: "MODE N ERRNO WHEN" with MODE one of count, fail, kill, short, cut,
/// alloc, record, and WHEN one of once, onwards; and the file of one Report. A recording is appended to that file's
/// name with kRecordingEnd.
inline constexpr const char* kPlanVariable = "STMDCM_FAULT_PLAN";
inline constexpr const char* kReportVariable = "STMDCM_FAULT_REPORT";
inline constexpr const char* kRecordingEnd = ".disk";

/// What the shim has seen: shared memory, so that a killed program reports, too.
struct Report {
    std::atomic<std::uint64_t> calls;  ///< that the plan's error can meet
    std::atomic<std::uint64_t> hits;   ///< faults made
    char call[32];                     ///< the first call that was hit
    char path[480];                    ///< the file that it was made on
};

/// One change of what is on disk, with `size` bytes behind it in a recording.
struct DiskChange {
    enum Kind : std::uint64_t {
        Create,    ///< an empty file, without a name
        Write,     ///< the bytes, to `at`
        Truncate,  ///< to the size `at`
        Sync,      ///< of a file or a folder
        Name  ///< the file gets the name "NEW" in the folder `at`; "NEW\0OLD": loses the other; "\0OLD": that alone
    };
    Kind kind;
    std::uint64_t inode;
    std::uint64_t at;
    std::uint64_t size;
};

}  // namespace stmdcm_test
