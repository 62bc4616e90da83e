#pragma once

#include <cstddef>
#include <string>

namespace stmdcm {

/// No file has a longer name (PATH_MAX).
inline constexpr std::size_t kLongestName = 4096;

/// Throws Failure for what can't be the name of a file. It is told by its beginning, where it is too long.
void RequirePossibleName(const std::string& name);

}  // namespace stmdcm
