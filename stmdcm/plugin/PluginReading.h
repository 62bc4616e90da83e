#pragma once

#include <string>
#include <vector>

#include "stmdcm/plugin/Plugin.h"
#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// Loads what was read through a plug-in, as a host does. Gives where that says something else, in sentences: none
/// where the two agree.
std::vector<std::string> DifferencesThroughPlugin(const Plugin& plugin, const Reading& reading);

}  // namespace stmdcm
