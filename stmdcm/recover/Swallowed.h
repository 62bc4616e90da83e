#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "stmdcm/capture/Container.h"

namespace stmdcm {

/// Where the first section of each of these names (and kWantedVersion) lies within another one that a search finds, as
/// a length that is too great makes it; in the order of the file. Empty unless there is one of each. Reads the capture.
std::vector<std::uint64_t> SwallowedSections(const Container& capture, std::vector<std::string> names);

}  // namespace stmdcm
