#pragma once

#include <cstdint>

namespace Zu::Wep::Trace {

// A section is out of use while the high bit of its version field is set: no search finds it. A section that is being
// saved begins so, and an edit leaves one so (docs/tdf.md, "Saving" and "Changing a configuration in place"). Then the
// rest of the field's top byte says how that came about. So taking a section out of use changes one byte, and only one
// with a version below 1 << 24 gets that back.

inline constexpr std::uint32_t kRetiredBit = 0x80000000;
/// No reader has ever got it: it was hidden by an older one, or is what an interrupted write left.
inline constexpr std::uint32_t kNeverInForceBit = 0x40000000;
inline constexpr std::uint32_t kUndoneBit = 0x20000000;
inline constexpr int kChangeNumberShift = 24;
/// Behind it comes 1; 0 is no number.
inline constexpr std::uint32_t kLastChangeNumber = 31;

constexpr bool IsRetired(std::uint32_t version) { return (version & kRetiredBit) != 0; }
/// The version that a section has, or had before it was retired.
constexpr std::uint32_t LiveVersion(std::uint32_t version) {
    return IsRetired(version) ? version & ((1U << kChangeNumberShift) - 1) : version;
}

/// Of one that was in force until the change of that number.
constexpr std::uint32_t Retired(std::uint32_t version, std::uint32_t changeNumber = 0) {
    return kRetiredBit | changeNumber << kChangeNumberShift | version;
}
constexpr std::uint32_t Undone(std::uint32_t version, std::uint32_t changeNumber) {
    return kUndoneBit | Retired(version, changeNumber);
}
constexpr std::uint32_t NeverInForce(std::uint32_t version, std::uint32_t changeNumber = 0) {
    return kNeverInForceBit | Retired(version, changeNumber);
}

/// Of a retired one, whether it ever was in force, and whether the change that retired it was an undo.
constexpr bool WasInForce(std::uint32_t version) { return IsRetired(version) && (version & kNeverInForceBit) == 0; }
constexpr bool IsUndone(std::uint32_t version) { return WasInForce(version) && (version & kUndoneBit) != 0; }
/// Of a retired one: 0 is unknown.
constexpr std::uint32_t ChangeNumber(std::uint32_t version) {
    return (version >> kChangeNumberShift) & kLastChangeNumber;
}

}  // namespace Zu::Wep::Trace
