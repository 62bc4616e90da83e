#pragma once

#include <string>

namespace stmdcm {

/// A longer one has no place in a pin (docs/pins.md), so it counts as none.
inline constexpr std::size_t kMaxBuildIdLength = 255;

/// The build-id of the ELF file behind the descriptor, from its note NT_GNU_BUILD_ID (elf(5)), as bytes; empty where it
/// has none or is no ELF file. Reads a few pieces of the file, wherever its position is, and leaves that.
std::string ReadBuildId(int descriptor);

}  // namespace stmdcm
