#include "stmdcm/capture/RemoveTree.h"

#include <ftw.h>

#include <cerrno>
#include <cstdio>

namespace stmdcm {

namespace {

constexpr int kMostDescriptors = 8;

int Remove(const char* path, const struct stat* /*info*/, int /*kind*/, struct FTW* /*place*/) {
    std::remove(path);
    return 0;
}

}  // namespace

/// Not with remove_all, which ends the program for want of memory. What took it may have given it back a moment later.
void RemoveTree(const std::filesystem::path& path) noexcept {
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (::nftw(path.c_str(), Remove, kMostDescriptors, FTW_DEPTH | FTW_PHYS) == 0 || errno != ENOMEM) {
            return;
        }
    }
}

}  // namespace stmdcm
