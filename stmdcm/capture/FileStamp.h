#pragma once

#include <sys/stat.h>

#include <compare>
#include <cstdint>
#include <string>

#include "source_utilities/PosixFile.h"

namespace stmdcm {

/// Tells whether a file is still the one that was looked at, and was not written since. Times are in nanoseconds.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;  ///< in bytes
    std::uint64_t modified = 0;
    std::uint64_t changed = 0;

    auto operator<=>(const FileStamp&) const = default;  // NOLINT(modernize-use-nullptr): not a pointer

    explicit FileStamp(const struct stat& info);
    FileStamp() = default;
    /// Throws Failure, with that path, for a file that can't be looked at.
    static FileStamp Of(const ZU_WEP::PosixFile& file, const std::string& path);
};

}  // namespace stmdcm
