#include "stmdcm/capture/RemoveTree.h"

#include <new>
#include <system_error>

namespace stmdcm {

/// What took the memory may have given it back a moment later.
void RemoveTree(const std::filesystem::path& path) noexcept {
    std::error_code error = std::make_error_code(std::errc::not_enough_memory);
    for (int attempt = 0; attempt < 2 && error == std::errc::not_enough_memory; ++attempt) {
        try {
            std::filesystem::remove_all(path, error);
        } catch (const std::bad_alloc&) {
        }
    }
}

}  // namespace stmdcm
