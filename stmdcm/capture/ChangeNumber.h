#pragma once

#include <cstdint>

#include "stmdcm/capture/Container.h"

namespace stmdcm {

/// What the next change of the capture marks the sections with that it retires (trace/format/RetiredSection.h). Going
/// round from the youngest, it is none that one of the last two retired DCM_COMMON or STMDECODERINFO has: so where the
/// last ones of both have the same number they were changed together, however often one was changed in between.
std::uint32_t NextChangeNumber(const Container& capture);

}  // namespace stmdcm
