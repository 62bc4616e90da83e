#pragma once

#include <filesystem>

namespace stmdcm {

/// Makes `directory`, which must hold `library`, the first in which the dynamic loader looks for libraries. The loader
/// reads LD_LIBRARY_PATH only when a program starts, so this program replaces itself with itself, with the same
/// arguments, unless the directory is first already. Call it before anything is made that would have to be given back.
/// Throws Failure.
void SearchLibrariesFirstIn(const std::filesystem::path& directory, const char* library);

/// The file that LD_LIBRARY_PATH makes the dynamic loader find first for a library; empty when it leads to none.
std::filesystem::path FirstOnLibraryPath(const char* library);

}  // namespace stmdcm
