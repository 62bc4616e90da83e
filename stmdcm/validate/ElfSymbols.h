#pragma once

#include <string>
#include <vector>

namespace stmdcm::validate {

/// The names that a shared library defines for others (the table that the dynamic loader reads), in no order, symbol
/// versions left out. Empty where there are none, or the file is no such library.
std::vector<std::string> ExportedSymbols(const std::string& path);

}  // namespace stmdcm::validate
