#pragma once

#include <filesystem>

namespace stmdcm {

/// Removes what is there, with everything in it, as far as that can be done. Destructors may call it: it throws
/// nothing.
void RemoveTree(const std::filesystem::path& path) noexcept;

}  // namespace stmdcm
