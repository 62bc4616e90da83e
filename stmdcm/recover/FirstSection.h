#pragma once

#include <cstdint>

#include "stmdcm/recover/HeaderRules.h"

namespace stmdcm {

/// Where the row of sections begins: behind the identifier. In a file without one (it may be overwritten, cut off or
/// behind other bytes) where the first bytes look most like a section; 0 where none of them does.
std::uint64_t FirstSection(const CaptureFile& file, const HeaderRules& rules);

}  // namespace stmdcm
