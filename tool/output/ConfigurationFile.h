#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Comparison.h"

namespace stmdcm {

/// Writes the bytes of a new capture or settings file, as the name says (OutputFile's rules), and reads them back
/// before they take their place. Gives what differs from `expected`, which the format could not keep.
std::vector<Difference> WriteConfiguration(const std::string& path, const std::string& bytes,
                                           const Configuration& expected, bool force,
                                           const std::vector<std::string>& inputs);

}  // namespace stmdcm
