#pragma once

#include <string>
#include <vector>

#include "stmdcm/reading/Comparison.h"
#include "stmdcm/reading/Reading.h"

namespace stmdcm {

/// Writes the bytes of a new capture or settings file, as the name says (OutputFile's rules), and reads them back
/// before they take their place. Gives sentences, with the path: what differs from `expected`, which the format could
/// not keep, and what of a file that was there is not kept.
std::vector<std::string> WriteConfiguration(const std::string& path, const std::string& bytes,
                                            const Configuration& expected, bool force,
                                            const std::vector<std::string>& inputs);

/// Sentences, with the name: what of `expected` the bytes of a capture or of settings don't keep.
std::vector<std::string> LossesOf(const std::string& name, ConfigurationKind kind, const std::string& bytes,
                                  const Configuration& expected);

}  // namespace stmdcm
