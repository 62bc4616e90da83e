#pragma once

#include <cstdint>

#include "stmdcm/capture/Container.h"

namespace stmdcm {

/// What a change marks the sections with that it retires (trace/format/RetiredSection.h).
struct ChangeMark {
    std::uint32_t number = 0;  ///< 0, for CaptureEditor: the next one of the capture
    bool isUndo = false;
};

/// The version that a section gets when the change takes it out of use.
std::uint32_t RetiredVersion(const Section& section, ChangeMark mark);

/// What the next change of the capture marks the sections with that it retires (trace/format/RetiredSection.h). Going
/// round from the youngest, it is none that one of the last two retired DCM_COMMON or STMDECODERINFO has: so where the
/// last ones of both have the same number they were changed together, however often one was changed in between.
std::uint32_t NextChangeNumber(const Container& capture);

}  // namespace stmdcm
