#pragma once

#include "tool/model/Configuration.h"

namespace stmdcm {

class Manager;

/// Takes a configuration out of a manager, through the plug-in's interfaces alone. The object files, which those
/// don't list, are left out: see ObjectFiles.
Configuration ReadConfiguration(const Manager& manager);

}  // namespace stmdcm
