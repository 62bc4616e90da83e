#pragma once

#include <cstdint>

namespace stmdcm {

// An edit retires a section by setting the high bit of its version field, so that no search finds it any more
// (docs/tdf.md, "Changing a configuration in place").

inline constexpr std::uint32_t kRetiredBit = 0x80000000;

constexpr std::uint32_t Retired(std::uint32_t version) { return version | kRetiredBit; }
constexpr bool IsRetired(std::uint32_t version) { return (version & kRetiredBit) != 0; }
/// The version that a section has, or had before it was retired.
constexpr std::uint32_t LiveVersion(std::uint32_t version) { return version & ~kRetiredBit; }

}  // namespace stmdcm
