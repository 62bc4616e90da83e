#pragma once

#include <vector>

#include "stmdcm/capture/ByteSink.h"
#include "stmdcm/capture/CaptureEditor.h"
#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/CopyRange.h"

namespace stmdcm {

/// Writes a copy of a capture with new sections in the place of old ones, which are retired in it: what CaptureEditor
/// makes of a file. Throws Failure, also for a capture in which a search does not get to the end of the file exactly,
/// and for one that is changed meanwhile.
void CopyCapture(const Container& from, const std::vector<NewSection>& sections, ByteSink& to,
                 const OnCopied& onCopied);

}  // namespace stmdcm
