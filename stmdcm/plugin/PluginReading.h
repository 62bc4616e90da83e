#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// Loads what was read through a plug-in, as a host does, in a home of its own. Gives where that says something else,
/// in sentences: none where the two agree. Throws Failure when the plug-in can't be loaded.
std::vector<std::string> DifferencesThroughPlugin(const std::string& pluginFile, const Reading& reading);

}  // namespace stmdcm
