#pragma once

#include <cstdint>
#include <filesystem>

namespace stmdcm {

/// A program image as a backup brings it back: with the modification time that it had. Throws Failure.
void WriteDemoImage(const std::filesystem::path& path, std::int64_t modified);

}  // namespace stmdcm
