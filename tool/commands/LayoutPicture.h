#pragma once

#include <string>

#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/SectionRuns.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// What lies where in a capture, as a bar with a letter for each kind of section.
std::string LayoutPicture(const Container& container, const SectionRuns& runs, const Palette& palette);

}  // namespace stmdcm
