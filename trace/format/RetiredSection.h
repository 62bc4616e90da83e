#pragma once

#include <cstdint>

namespace Zu::Wep::Trace {

// A section is out of use while the high bit of its version field is set: no search finds it. A section that is being
// saved begins so, and an edit leaves one so (docs/tdf.md, "Saving" and "Changing a configuration in place").

inline constexpr std::uint32_t kRetiredBit = 0x80000000;

constexpr std::uint32_t Retired(std::uint32_t version) { return version | kRetiredBit; }
constexpr bool IsRetired(std::uint32_t version) { return (version & kRetiredBit) != 0; }
/// The version that a section has, or had before it was retired.
constexpr std::uint32_t LiveVersion(std::uint32_t version) { return version & ~kRetiredBit; }

}  // namespace Zu::Wep::Trace
