#pragma once

#include <cstddef>
#include <string_view>

#include "tool/check/Findings.h"

namespace stmdcm {

/// Checks the payload of DCM_COMMON (docs/object-files.md) and the files that it names. Gives the number of object
/// files that a manager keeps.
std::size_t CheckObjectFiles(std::string_view payload, const Place& place, Findings& findings);

}  // namespace stmdcm
