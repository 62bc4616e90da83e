#pragma once

#include <functional>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// Adds to the findings of a capture what another machine would lack (docs/check.md, "On another machine"). `isPinned`
/// tells whether the capture says what an image is, besides its path and time.
void CheckPortability(Reading& reading, const std::function<bool(const ObjectFile&)>& isPinned);

}  // namespace stmdcm
