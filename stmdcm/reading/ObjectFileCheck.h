#pragma once

#include <string_view>
#include <vector>

#include "stmdcm/reading/Configuration.h"
#include "stmdcm/reading/Findings.h"

namespace stmdcm {

/// The entries of a payload of DCM_COMMON (docs/object-files.md), with what is on disk now. False when they don't fill
/// it.
bool ParseObjectFiles(std::string_view payload, std::vector<ObjectFile>& files);

/// The same, and finds what is wrong with them and with the files that they name.
std::vector<ObjectFile> ReadObjectFiles(std::string_view payload, const Place& place, Findings& findings);

}  // namespace stmdcm
